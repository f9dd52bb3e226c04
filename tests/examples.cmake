set(sync_folder ${PROJECT_SOURCE_DIR}/examples/sync_folder)
drivelog_test(examples_tests
              SOURCES ExamplesFolderTest.cpp
                      ${sync_folder}/FolderWalk.cpp ${sync_folder}/FolderWatch.cpp
              USES drivelog_operatelog)
