# The Debian package, made by script/package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_SOURCE_DIR}/build/package)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/DebianLayout.cmake)

set(CPACK_PACKAGE_VENDOR "The Veloria authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "living band of coloured light over the top panel")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Veloria paints curtains of light over the strip of the screen that the top
panel occupies: a real fluid, simulated for every frame on the GPU, or on the
CPU if there is none. It can lie behind all windows, over the panel, or fill
the screen, and it can be driven by music, by programs and coding agents, by
the weather, or by a script. Clicks go through it.
.
The command nimbra tells it what programs do. It runs on X11, and on Wayland
compositors that have the layer shell.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
if(NOT DEFINED ENV{DEBFULLNAME} OR NOT DEFINED ENV{DEBEMAIL})
  set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The Veloria authors <authors@veloria.invalid>")
endif()
set(CPACK_DEBIAN_PACKAGE_SECTION x11)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Shared libraries are found by dpkg-shlibdeps; what is loaded by name at run time is not. Qt's plugins for X11 and TLS
# come with its libraries. Without Vulkan, or a driver for it, the CPU draws.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${CMAKE_SOURCE_DIR}/packaging/debian/prerm")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "mesa-vulkan-drivers | vulkan-icd, libvulkan1, ca-certificates, libqt6svg6, qt6-image-formats-plugins, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "pulseaudio | pipewire-pulse")
include(CPack)
