# The conformance suite with the CPU's back end, once for each instruction set that this machine runs.
veloria_cpu_library(tests ${gpu_test_shaders} ${CMAKE_SOURCE_DIR}/src/render/shaders/words.glsl
                    ${CMAKE_SOURCE_DIR}/src/render/shaders/kernel.glsl)
add_library(veloria_gpu_cpu_backend STATIC CpuBackend.cpp)
target_link_libraries(veloria_gpu_cpu_backend PUBLIC veloria_gpu_harness PRIVATE tests_cpu_library)
veloria_common_options(veloria_gpu_cpu_backend)

veloria_test(gpu_cpu_tests
  SOURCES conformance_test.cpp cpu_test.cpp
  LINK veloria_gpu_cpu_backend veloria_gpu_cpu)
foreach(set IN ITEMS baseline sse42 avx2)
  add_test(NAME gpu_cpu_tests_${set} COMMAND gpu_cpu_tests)
  set_tests_properties(gpu_cpu_tests_${set} PROPERTIES TIMEOUT 300 ENVIRONMENT "VELORIA_TEST_SET=${set}")
endforeach()
