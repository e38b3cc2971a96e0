# The conformance suite with Metal's back end. Its functions are compiled by the steps and with the options of build.sh.
set(gpu_test_library ${CMAKE_CURRENT_BINARY_DIR}/test.metallib)
set(gpu_test_objects)
foreach(module IN LISTS gpu_test_modules)
  string(REGEX REPLACE "spv$" "metal" source ${module})
  string(REGEX REPLACE "spv$" "air" object ${module})
  add_custom_command(
    OUTPUT ${object}
    COMMAND spirv-cross ${module} --msl --msl-version 30000 --msl-decoration-binding --flip-vert-y --output ${source}
    COMMAND xcrun -sdk macosx metal -std=metal3.0 -mmacosx-version-min=14.0 -fno-fast-math -c ${source} -o ${object}
    DEPENDS ${module}
    VERBATIM)
  list(APPEND gpu_test_objects ${object})
endforeach()
add_custom_command(
  OUTPUT ${gpu_test_library}
  COMMAND xcrun -sdk macosx metallib ${gpu_test_objects} -o ${gpu_test_library}
  DEPENDS ${gpu_test_objects}
  COMMENT "Compiling the GPU tests' functions for Metal"
  VERBATIM)
add_custom_target(gpu_test_library DEPENDS ${gpu_test_library})

veloria_test(gpu_metal_tests
  SOURCES conformance_test.cpp
  LINK veloria_gpu_harness gpu_metal_backend veloria_gpu_metal)
add_dependencies(gpu_metal_tests gpu_test_library)
# The system's own validation ends the program where a call is wrong.
set_tests_properties(gpu_metal_tests PROPERTIES ENVIRONMENT "MTL_DEBUG_LAYER=1;MTL_SHADER_VALIDATION=1")
