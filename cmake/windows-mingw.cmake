# Toolchain file: Windows x64 by MinGW-w64 with posix threads, on another system.
#
# The libraries come from the prefix that scripts/windows-deps.sh builds, or from DRIVELOG_WINDOWS_DEPS (a
# cache or environment variable). Programs and DLLs need no other DLL than the system's. Tests run under Wine
# where there is one.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Compiler messages, assertions and debug information name files relative to the tree.
set(CMAKE_CXX_FLAGS_INIT "-ffile-prefix-map=${CMAKE_CURRENT_LIST_DIR}/..=.")
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static")
endforeach()
set(OPENSSL_USE_STATIC_LIBS ON)

# CMake reads this file again for every check that it compiles, there without the cache.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES DRIVELOG_WINDOWS_DEPS)
if(NOT DRIVELOG_WINDOWS_DEPS)
  if(DEFINED ENV{DRIVELOG_WINDOWS_DEPS})
    set(prefix "$ENV{DRIVELOG_WINDOWS_DEPS}")
  else()
    execute_process(COMMAND bash ${CMAKE_CURRENT_LIST_DIR}/../scripts/windows-deps.sh --print-prefix
                    OUTPUT_VARIABLE prefix OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
      message(FATAL_ERROR "The libraries for Windows are missing: run scripts/windows-deps.sh first.")
    endif()
  endif()
  set(DRIVELOG_WINDOWS_DEPS "${prefix}" CACHE PATH "Prefix of the libraries for Windows")
endif()

# Programs are this machine's; headers, libraries and packages are Windows' and nothing else. A project that
# uses the library adds where it is installed, as CMAKE_FIND_ROOT_PATH.
list(APPEND CMAKE_FIND_ROOT_PATH ${DRIVELOG_WINDOWS_DEPS})
list(APPEND CMAKE_PREFIX_PATH ${DRIVELOG_WINDOWS_DEPS})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Debian's wine64 package alone suffices, and it puts the program outside of the PATH.
find_program(DRIVELOG_WINE NAMES wine64 wine PATHS /usr/lib/wine)
if(DRIVELOG_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${DRIVELOG_WINE})
endif()
