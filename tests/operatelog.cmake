drivelog_test(operatelog_tests
              SOURCES OperateLogCountTest.cpp OperateLogQueueTest.cpp OperateLogTablesTest.cpp
                      OperateLogUbaJsonTest.cpp OperateLogUploadTest.cpp
              USES drivelog_operatelog drivelog_test_support)
