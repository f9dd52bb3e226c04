drivelog_test(collector_tests
  SOURCES CollectorCheckTest.cpp CollectorDecodeTest.cpp CollectorRequests.cpp CollectorServerTest.cpp
  USES drivelog_collector drivelog_httplib ZLIB::ZLIB)
target_compile_definitions(collector_tests PRIVATE CPPHTTPLIB_OPENSSL_SUPPORT)
