# Installs the build into a folder, builds the README's program and another one against it, and runs both.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\nended with ${result}:\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix)

# The README's program, from its first block of C++.
file(READ ${README} text)
string(FIND "${text}" "```cpp\n" begin)
if(begin EQUAL -1)
  message(FATAL_ERROR "the README has no program")
endif()
math(EXPR begin "${begin} + 7")
string(SUBSTRING "${text}" ${begin} -1 text)
string(FIND "${text}" "```" end)
string(SUBSTRING "${text}" 0 ${end} program)
file(WRITE ${WORK_DIR}/readme.cpp "${program}")

set(arguments -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK_DIR}/build -G ${GENERATOR}
    -DCMAKE_BUILD_TYPE=${BUILD_TYPE} -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_CXX_FLAGS=${CXX_FLAGS}
    -Ddrivelog_ROOT=${WORK_DIR}/prefix -DCONSUMER_SOURCE=${WORK_DIR}/readme.cpp)
if(TOOLCHAIN)
  # A cross build looks for packages only where it is told to.
  list(APPEND arguments -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DCMAKE_FIND_ROOT_PATH=${WORK_DIR}/prefix)
endif()
run(${CMAKE_COMMAND} ${arguments})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)

set(suffix "")
if(TOOLCHAIN)
  set(suffix ".exe")
  file(GLOB libraries ${WORK_DIR}/prefix/bin/*.dll)
  file(COPY ${libraries} DESTINATION ${WORK_DIR}/build)
endif()
set(home ${WORK_DIR}/home)
file(MAKE_DIRECTORY ${home})
set(user_folders HOME=${home} XDG_CONFIG_HOME=${home}/config XDG_DATA_HOME=${home}/data)
foreach(program IN ITEMS consumer client_consumer)
  set(command ${WORK_DIR}/build/${program}${suffix})
  if(EMULATOR)
    run(${EMULATOR} ${command})
  else()
    run(${CMAKE_COMMAND} -E env ${user_folders} ${command})
  endif()
endforeach()

# The program ended at once; what it recorded must be in its database all the same.
if(NOT EMULATOR)
  file(GLOB_RECURSE databases ${home}/*LogDB)
  if(NOT databases)
    message(FATAL_ERROR "the README's program left no database")
  endif()
endif()
