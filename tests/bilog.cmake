drivelog_test(bilog_tests
              SOURCES BiLogTimerThreadTest.cpp BiLogQueueTest.cpp BiLogRecordJsonTest.cpp BiLogFacadeTest.cpp
              USES drivelog_bilog drivelog_test_support)
