# The committed requests of tests/vectors, and how they are made.
drivelog_test(vectors_tests SOURCES VectorsTest.cpp
              USES drivelog_operatelog drivelog_collector drivelog_test_support)
target_compile_definitions(vectors_tests PRIVATE VECTORS_FOLDER="${CMAKE_CURRENT_SOURCE_DIR}/vectors")
