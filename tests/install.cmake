# A host's program, the one in the README, is built against an installed tree and run.
add_test(NAME install.consumer
         COMMAND ${CMAKE_COMMAND}
                 -DBUILD_DIR=${PROJECT_BINARY_DIR}
                 -DBUILD_TYPE=${CMAKE_BUILD_TYPE}
                 -DGENERATOR=${CMAKE_GENERATOR}
                 -DCXX_COMPILER=${CMAKE_CXX_COMPILER}
                 -DCXX_FLAGS=${CMAKE_CXX_FLAGS}
                 -DTOOLCHAIN=${CMAKE_TOOLCHAIN_FILE}
                 -DEMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}
                 -DREADME=${PROJECT_SOURCE_DIR}/README.md
                 -DWORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/install
                 -P ${CMAKE_CURRENT_SOURCE_DIR}/install/InstallTest.cmake)
set_tests_properties(install.consumer PROPERTIES TIMEOUT 300)
