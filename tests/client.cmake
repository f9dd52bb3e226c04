drivelog_test(client_tests
              SOURCES ClientEncryptHelperTest.cpp ClientFactsTest.cpp ClientIniFileTest.cpp ClientIpcTest.cpp
                      ClientSyncPanelLogTest.cpp ClientTypeConvertTest.cpp
              USES drivelog_client OpenSSL::Crypto nng::nng)
