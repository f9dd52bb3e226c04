# The library as hosts link it: drivelog::drivelog, composed of the rooms' objects, and its installation.

set(DRIVELOG_ROOMS commlog model logdb transport bilog operatelog)

add_library(drivelog)
add_library(drivelog::drivelog ALIAS drivelog)
add_library(drivelog::client ALIAS drivelog_client)
foreach(room IN LISTS DRIVELOG_ROOMS)
  target_sources(drivelog PRIVATE $<TARGET_OBJECTS:drivelog_${room}>)
endforeach()
drivelog_target_settings(drivelog)
# It has no source of its own to tell the linker by.
set_target_properties(drivelog PROPERTIES LINKER_LANGUAGE CXX CXX_VISIBILITY_PRESET hidden)
target_link_libraries(drivelog PUBLIC drivelog_headers
                      PRIVATE SQLite::SQLite3 CURL::libcurl drivelog::jsoncpp ZLIB::ZLIB Threads::Threads)

if(WIN32 AND BUILD_SHARED_LIBS)
  # The DLL holds the client's part itself: a host that links drivelog::client too has a copy of its own, with
  # process-wide values of its own.
  target_link_libraries(drivelog PRIVATE drivelog_client)
  set_target_properties(drivelog PROPERTIES PREFIX "")
else()
  target_link_libraries(drivelog PUBLIC drivelog_client)
endif()
if(BUILD_SHARED_LIBS AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
  # A symbol that is missing is told when the library is linked, not when a host is; and the code stays in the
  # process when a host unloads it, since detached threads run in it.
  foreach(library drivelog drivelog_client)
    target_link_options(${library} PRIVATE LINKER:--no-undefined,-z,nodelete)
  endforeach()
endif()
if(NOT BUILD_SHARED_LIBS)
  target_compile_definitions(drivelog INTERFACE DRIVELOG_STATIC)
endif()

# Before 1.0 any minor version may break the binary interface.
set(soversion ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set_target_properties(drivelog drivelog_client PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${soversion})
set_target_properties(drivelog PROPERTIES INSTALL_RPATH "$ORIGIN")

# --- Installation ---------------------------------------------------------------------------------------------

include(CMakePackageConfigHelpers)

set_target_properties(drivelog_client PROPERTIES EXPORT_NAME client)
set_target_properties(drivelog_headers PROPERTIES EXPORT_NAME headers)
set_target_properties(drivelog_simpleini PROPERTIES EXPORT_NAME simpleini)
install(TARGETS drivelog drivelog_client drivelog_headers drivelog_simpleini EXPORT drivelog-targets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/drivelog DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
# In a folder of their own, so that a product's own client headers are found first.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/client
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/drivelog-client
        FILES_MATCHING PATTERN "*.h")

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/drivelog)
install(EXPORT drivelog-targets NAMESPACE drivelog:: DESTINATION ${package_folder})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/drivelog-config.cmake.in
                              ${PROJECT_BINARY_DIR}/drivelog-config.cmake
                              INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/drivelog-config-version.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/drivelog-config.cmake ${PROJECT_BINARY_DIR}/drivelog-config-version.cmake
              ${PROJECT_SOURCE_DIR}/cmake/TargetNames.cmake
        DESTINATION ${package_folder})
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
