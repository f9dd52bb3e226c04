drivelog_test(transport_tests
              SOURCES TransportEncodingTest.cpp TransportDescriptionTest.cpp TransportUploadTest.cpp
              USES drivelog_transport drivelog_collector drivelog_test_support ZLIB::ZLIB)
