drivelog_test(client_tests
              SOURCES ClientEncryptHelperTest.cpp ClientFilesTest.cpp ClientIpcTest.cpp ClientTextTest.cpp
              USES drivelog_client drivelog_collector OpenSSL::Crypto)
