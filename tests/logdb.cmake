drivelog_test(logdb_tests
              SOURCES LogDbFaultsTest.cpp LogDbFileTest.cpp LogDbRecordsTest.cpp
              USES drivelog_logdb drivelog_test_support)
