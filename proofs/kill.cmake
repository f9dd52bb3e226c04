# Products that are killed, and products side by side: the processes and the book of their records.
add_executable(recording_child recording_child.cpp)
drivelog_target_settings(recording_child)
target_link_libraries(recording_child PRIVATE drivelog_operatelog drivelog_test_support)

add_library(drivelog_recording_children STATIC RecordingChildren.cpp)
drivelog_target_settings(drivelog_recording_children)
target_compile_definitions(drivelog_recording_children PRIVATE RECORDING_CHILD="$<TARGET_FILE:recording_child>")
target_link_libraries(drivelog_recording_children PUBLIC drivelog_proof drivelog_collector)
add_dependencies(drivelog_recording_children recording_child)

drivelog_proof(kill SOURCES kill.cpp USES drivelog_recording_children)
