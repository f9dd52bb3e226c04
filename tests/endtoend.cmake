# The whole library against the real collector.
add_executable(exit_while_running programs/exit_while_running.cpp)
drivelog_target_settings(exit_while_running)
target_link_libraries(exit_while_running PRIVATE drivelog_operatelog drivelog_test_support)

drivelog_test(endtoend_tests
              SOURCES EndToEndExitTest.cpp EndToEndMaintenanceTest.cpp EndToEndOperationTest.cpp
              USES drivelog_operatelog drivelog_collector drivelog_test_support)
target_compile_definitions(endtoend_tests PRIVATE EXIT_WHILE_RUNNING="$<TARGET_FILE:exit_while_running>")
add_dependencies(endtoend_tests exit_while_running)

# On the uninstrumented build, where the memory checker is there.
find_program(VALGRIND valgrind)
if(VALGRIND AND NOT WIN32 AND NOT CMAKE_CXX_FLAGS MATCHES "fsanitize")
  add_test(NAME memcheck.endtoend
           COMMAND ${PROJECT_SOURCE_DIR}/scripts/memcheck.sh
                   $<TARGET_FILE:endtoend_tests> --gtest_filter=OperationTest.DeliversBoth*)
  set_tests_properties(memcheck.endtoend PROPERTIES TIMEOUT 600)
endif()
