# Returns from main with records in its queue; the tests run it as a child.
add_executable(exit_with_queued_records programs/exit_with_queued_records.cpp)
drivelog_target_settings(exit_with_queued_records)
target_include_directories(exit_with_queued_records PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(exit_with_queued_records PRIVATE drivelog_operatelog)

drivelog_test(operatelog_tests
              SOURCES OperateLogBatchCycleTest.cpp OperateLogCountTest.cpp OperateLogEnvelopeTest.cpp
                      OperateLogExitTest.cpp OperateLogFacadeTest.cpp OperateLogQueueTest.cpp
                      OperateLogTablesTest.cpp OperateLogUbaJsonTest.cpp OperateLogUploadTest.cpp
              USES drivelog_operatelog drivelog_test_support drivelog_scripted_server ZLIB::ZLIB)
target_compile_definitions(operatelog_tests
                           PRIVATE EXIT_WITH_QUEUED_RECORDS="$<TARGET_FILE:exit_with_queued_records>")
add_dependencies(operatelog_tests exit_with_queued_records)
