drivelog_test(events_tests
              SOURCES ModelEventsTest.cpp ModelLogExntendTest.cpp
              USES drivelog_model drivelog_test_support)
