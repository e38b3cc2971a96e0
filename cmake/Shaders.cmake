# The shader library: build.sh is the one place that knows how it is made.
if(APPLE)
  set(VELORIA_SHADER_LIBRARY ${CMAKE_BINARY_DIR}/default.metallib)
else()
  set(VELORIA_SHADER_LIBRARY ${CMAKE_BINARY_DIR}/default.spv)
endif()
file(GLOB shader_sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/render/shaders/*
     ${CMAKE_SOURCE_DIR}/src/render/*Fields.h)
add_custom_command(
  OUTPUT ${VELORIA_SHADER_LIBRARY}
  COMMAND ${CMAKE_SOURCE_DIR}/build.sh ${CMAKE_BINARY_DIR}
  DEPENDS ${shader_sources} ${CMAKE_SOURCE_DIR}/build.sh ${CMAKE_SOURCE_DIR}/script/check-bindings
  COMMENT "Compiling the shader library"
  VERBATIM)
add_custom_target(shaders ALL DEPENDS ${VELORIA_SHADER_LIBRARY})
