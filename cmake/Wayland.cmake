# The Wayland protocols in use, made into one C library by wayland-scanner. The layer shell's description comes with the
# package wlr-protocols or, where that is not packaged, with others; WLR_PROTOCOLS names its folder by hand.
enable_language(C)
pkg_check_modules(WAYLAND REQUIRED IMPORTED_TARGET wayland-client)
find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
pkg_get_variable(wayland_protocols wayland-protocols pkgdatadir)
pkg_get_variable(wlr_protocols wlr-protocols pkgdatadir)
file(GLOB packaged_wlr_protocols /usr/share/cargo/registry/wayland-protocols-*/wlr-protocols)
find_path(WLR_PROTOCOLS unstable/wlr-layer-shell-unstable-v1.xml PATHS ${wlr_protocols} ${packaged_wlr_protocols}
          NO_DEFAULT_PATH DOC "folder of the wlroots protocols")
if(NOT WLR_PROTOCOLS)
  message(FATAL_ERROR "wlr-layer-shell-unstable-v1.xml is missing. Install wlr-protocols (on Debian "
                      "librust-wayland-protocols-dev has it), or give its folder with -DWLR_PROTOCOLS=...")
endif()

set(protocols
  ${wayland_protocols}/stable/xdg-shell/xdg-shell.xml
  ${wayland_protocols}/stable/viewporter/viewporter.xml
  ${wayland_protocols}/unstable/xdg-output/xdg-output-unstable-v1.xml
  ${WLR_PROTOCOLS}/unstable/wlr-foreign-toplevel-management-unstable-v1.xml
  ${WLR_PROTOCOLS}/unstable/wlr-output-power-management-unstable-v1.xml
  ${WLR_PROTOCOLS}/unstable/wlr-layer-shell-unstable-v1.xml)
set(protocol_folder ${CMAKE_BINARY_DIR}/wayland)
file(MAKE_DIRECTORY ${protocol_folder})
foreach(protocol IN LISTS protocols)
  get_filename_component(name ${protocol} NAME_WE)
  set(header ${protocol_folder}/${name}-client-protocol.h)
  set(code ${protocol_folder}/${name}-protocol.c)
  # A parameter of the layer shell has a name that C++ keeps for itself.
  add_custom_command(OUTPUT ${header}
                     COMMAND ${WAYLAND_SCANNER} client-header ${protocol} ${header}
                     COMMAND sed -i "s/\\bnamespace\\b/name_space/" ${header}
                     DEPENDS ${protocol} VERBATIM)
  add_custom_command(OUTPUT ${code} COMMAND ${WAYLAND_SCANNER} private-code ${protocol} ${code}
                     DEPENDS ${protocol} VERBATIM)
  list(APPEND protocol_sources ${header} ${code})
endforeach()
add_library(veloria_wayland_protocols STATIC ${protocol_sources})
target_include_directories(veloria_wayland_protocols SYSTEM PUBLIC ${protocol_folder})
target_link_libraries(veloria_wayland_protocols PUBLIC PkgConfig::WAYLAND)
