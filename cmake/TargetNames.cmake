# JsonCpp and utf8cpp name their targets differently from release to release: one name for each. Installed
# with the library, since a host of the static one needs the same names.

function(drivelog_first_target alias)
  if(TARGET ${alias})
    return()
  endif()
  foreach(candidate IN LISTS ARGN)
    if(TARGET ${candidate})
      add_library(${alias} INTERFACE IMPORTED GLOBAL)
      target_link_libraries(${alias} INTERFACE ${candidate})
      return()
    endif()
  endforeach()
  message(FATAL_ERROR "none of these targets exists: ${ARGN}")
endfunction()
drivelog_first_target(drivelog::jsoncpp JsonCpp::JsonCpp jsoncpp_lib jsoncpp_static jsoncpp_lib_static)
drivelog_first_target(drivelog::utf8cpp utf8cpp::utf8cpp utf8cpp utf8::cpp)
