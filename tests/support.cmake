# What the tests of several rooms share.
add_library(drivelog_test_support STATIC support/FaultyVfs.cpp support/ManualClock.cpp)
drivelog_target_settings(drivelog_test_support)
target_include_directories(drivelog_test_support PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(drivelog_test_support PUBLIC drivelog_client SQLite::SQLite3 Threads::Threads)
