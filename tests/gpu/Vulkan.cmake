# The conformance suite with Vulkan's back end, and what else is tested with it.
set(gpu_test_library ${CMAKE_CURRENT_BINARY_DIR}/test.spv)
add_custom_command(
  OUTPUT ${gpu_test_library}
  COMMAND spirv-link --target-env vulkan1.2 ${gpu_test_modules} -o ${gpu_test_library}
  COMMAND spirv-val --target-env vulkan1.2 ${gpu_test_library}
  COMMAND ${CMAKE_SOURCE_DIR}/script/check-bindings ${gpu_test_library}
  DEPENDS ${gpu_test_modules} ${CMAKE_SOURCE_DIR}/script/check-bindings
  COMMENT "Compiling the GPU tests' functions"
  VERBATIM)
add_custom_target(gpu_test_library DEPENDS ${gpu_test_library})

add_library(veloria_gpu_vulkan_backend STATIC VulkanBackend.cpp)
target_link_libraries(veloria_gpu_vulkan_backend PUBLIC veloria_gpu_harness veloria_gpu_vulkan)
target_compile_definitions(veloria_gpu_vulkan_backend PRIVATE GPU_TEST_LIBRARY="${gpu_test_library}")
veloria_common_options(veloria_gpu_vulkan_backend)
add_dependencies(veloria_gpu_vulkan_backend gpu_test_library)

veloria_test(gpu_vulkan_tests
  SOURCES conformance_test.cpp vulkan_test.cpp
  LINK veloria_gpu_vulkan_backend)

veloria_test(gpu_surface_tests
  SOURCES surface_test.cpp
  LINK veloria_gpu_vulkan_backend veloria_desktop_harness veloria_platform_linux_x11 PkgConfig::XCB
  LABELS desktop)

add_test(NAME gpu_bindings_test COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/bindings_test ${CMAKE_SOURCE_DIR}/script/check-bindings)

# What the product's functions bind, and their Metal source.
set(metal_source ${CMAKE_CURRENT_BINARY_DIR}/metal)
add_custom_command(
  OUTPUT ${metal_source}/stamp
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${metal_source}
  COMMAND ${CMAKE_SOURCE_DIR}/build.sh --msl ${metal_source}
  COMMAND ${CMAKE_SOURCE_DIR}/script/check-bindings ${VELORIA_SHADER_LIBRARY} > ${metal_source}/bindings
  COMMAND ${CMAKE_COMMAND} -E touch ${metal_source}/stamp
  DEPENDS ${VELORIA_SHADER_LIBRARY} ${CMAKE_SOURCE_DIR}/build.sh
  COMMENT "Writing the Metal source"
  VERBATIM)
add_custom_target(metal_source DEPENDS ${metal_source}/stamp)
veloria_test(gpu_metal_source_tests SOURCES metal_source_test.cpp LINK veloria_render)
target_compile_definitions(gpu_metal_source_tests PRIVATE METAL_SOURCE="${metal_source}")
add_dependencies(gpu_metal_source_tests metal_source shaders)
