drivelog_test(model_tests SOURCES ModelRecordTest.cpp ModelSettingsTest.cpp USES drivelog_model)
