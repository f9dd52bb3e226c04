drivelog_test(commlog_tests SOURCES CommLogTest.cpp USES drivelog_commlog)
