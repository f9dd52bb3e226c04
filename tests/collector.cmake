drivelog_test(collector_tests
  SOURCES CollectorCheckTest.cpp CollectorRequests.cpp CollectorServerTest.cpp
  USES drivelog_collector drivelog_client drivelog_httplib ZLIB::ZLIB)
target_compile_definitions(collector_tests PRIVATE VECTORS_FOLDER="${CMAKE_CURRENT_SOURCE_DIR}/vectors")
