# The DLL as hosts on Windows link it. Everything else tests the rooms.
if(NOT WIN32 OR NOT BUILD_SHARED_LIBS)
  return()
endif()

add_executable(dll_host windows/dll_host.cpp)
add_library(dll_plugin MODULE windows/dll_plugin.cpp)
add_executable(dll_unload windows/dll_unload.cpp)
foreach(target dll_host dll_plugin dll_unload)
  drivelog_target_settings(${target})
endforeach()
# Beside the program that loads it.
set_target_properties(dll_plugin PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
target_link_libraries(dll_host PRIVATE drivelog::drivelog)
target_link_libraries(dll_plugin PRIVATE drivelog::drivelog)

# A process that has loaded the DLL cannot be given folders of the test's: they are the account's.
drivelog_test(windows_tests SOURCES WindowsDllTest.cpp WindowsSystemTest.cpp
              USES drivelog_logdb drivelog_test_support
              LOCK account)
target_compile_definitions(windows_tests PRIVATE DLL_HOST="$<TARGET_FILE:dll_host>"
                           DLL_UNLOAD="$<TARGET_FILE:dll_unload>")
add_dependencies(windows_tests dll_host dll_plugin dll_unload)

if(CMAKE_CROSSCOMPILING)
  string(REGEX REPLACE "objdump$" "" tools "${CMAKE_OBJDUMP}")
  add_test(NAME windows.exports
           COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/windows/exports.sh $<TARGET_FILE:drivelog> ${tools})
endif()
