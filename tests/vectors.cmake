# The committed requests of tests/vectors, and the program that made them.
add_executable(make_vectors programs/make_vectors.cpp)
drivelog_target_settings(make_vectors)
target_link_libraries(make_vectors PRIVATE drivelog_operatelog drivelog_collector drivelog_test_support)

drivelog_test(vectors_tests SOURCES VectorsTest.cpp USES drivelog_collector)
target_compile_definitions(vectors_tests PRIVATE VECTORS_FOLDER="${CMAKE_CURRENT_SOURCE_DIR}/vectors")
