# What the tests of several rooms share.
if(WIN32)
  set(system win32)
else()
  set(system posix)
endif()
add_library(drivelog_test_support STATIC support/ChildProcess_${system}.cpp support/FaultyVfs.cpp
            support/ManualClock.cpp)
drivelog_target_settings(drivelog_test_support)
target_include_directories(drivelog_test_support PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(drivelog_test_support PUBLIC drivelog_client SQLite::SQLite3 Threads::Threads)
