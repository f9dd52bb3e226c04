# drivelog_room(NAME SOURCES... [USES LIBRARIES...]) makes the static library drivelog_NAME of one room.
#
# The library and the tests are composed of rooms; what a room links is what it may include.

function(drivelog_target_settings target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF POSITION_INDEPENDENT_CODE ON
                        VISIBILITY_INLINES_HIDDEN ON)
  if(WIN32)
    target_compile_definitions(${target} PRIVATE NOMINMAX WIN32_LEAN_AND_MEAN)
  endif()
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 /utf-8 $<$<BOOL:${DRIVELOG_WERROR}>:/WX>)
  else()
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                           $<$<BOOL:${DRIVELOG_WERROR}>:-Werror> $<$<BOOL:${DRIVELOG_WERROR}>:-pedantic-errors>)
  endif()
endfunction()

# A room inside the library: its symbols are hidden unless Export.h says otherwise.
function(drivelog_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;USES;PRIVATE_USES" ${ARGN})
  set(target drivelog_${name})
  add_library(${target} STATIC ${ROOM_SOURCES})
  drivelog_target_settings(${target})
  set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden)
  target_compile_definitions(${target} PRIVATE DRIVELOG_BUILDING INTERFACE DRIVELOG_STATIC)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  target_link_libraries(${target} PUBLIC ${ROOM_USES} PRIVATE ${ROOM_PRIVATE_USES})
endfunction()
