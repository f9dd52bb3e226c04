add_library(drivelog_scripted_server STATIC support/Certificates.cpp support/ScriptedServer.cpp)
drivelog_target_settings(drivelog_scripted_server)
target_include_directories(drivelog_scripted_server PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(drivelog_scripted_server PUBLIC drivelog_client OpenSSL::SSL OpenSSL::Crypto Threads::Threads)

drivelog_test(transport_tests
              SOURCES TransportEncodingTest.cpp TransportDescriptionTest.cpp TransportUploadTest.cpp
                      TransportNetworkFaultsTest.cpp
              USES drivelog_transport drivelog_scripted_server ZLIB::ZLIB)
