# The conformance suite with the CPU's back end, once for each instruction set.
veloria_cpu_library(tests ${gpu_test_shaders} ${CMAKE_SOURCE_DIR}/src/render/shaders/words.glsl
                    ${CMAKE_SOURCE_DIR}/src/render/shaders/kernel.glsl)
add_library(veloria_gpu_cpu_backend STATIC CpuBackend.cpp)
target_link_libraries(veloria_gpu_cpu_backend PUBLIC veloria_gpu_harness PRIVATE tests_cpu_library)
target_compile_definitions(veloria_gpu_cpu_backend PRIVATE GPU_TEST_CPU_LIBRARY=testsCpuLibrary)
veloria_common_options(veloria_gpu_cpu_backend)

# veloria_cpu_test_runs(<test> <instruction sets>): more runs of a test of the CPU's back end. One whose set this
# processor lacks prints so, and is skipped.
function(veloria_cpu_test_runs test)
  foreach(set IN LISTS ARGN)
    add_test(NAME ${test}_${set} COMMAND ${test})
    set_tests_properties(${test}_${set} PROPERTIES TIMEOUT 300 ENVIRONMENT "VELORIA_TEST_SET=${set}"
      SKIP_REGULAR_EXPRESSION "this processor has no \"cpu:${set}\"")
  endforeach()
endfunction()

veloria_test(gpu_cpu_tests
  SOURCES conformance_test.cpp cpu_test.cpp
  LINK veloria_gpu_cpu_backend veloria_gpu_cpu)
veloria_cpu_test_runs(gpu_cpu_tests baseline sse42 avx2)
