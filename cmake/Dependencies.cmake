# Everything that is bought rather than built here. script/bootstrap installs it.
find_package(nlohmann_json REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui Widgets Network)
find_package(PkgConfig REQUIRED)
pkg_check_modules(KISSFFT REQUIRED IMPORTED_TARGET kissfft-float)
if(NOT APPLE)
  find_package(Vulkan REQUIRED)
  find_package(Qt6 6.4 REQUIRED COMPONENTS DBus)
  pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb xcb-randr xcb-shape xcb-ewmh xcb-icccm xcb-composite xcb-xfixes
                    xcb-render xcb-damage xcb-shm xcb-dpms)
  pkg_check_modules(PULSE REQUIRED IMPORTED_TARGET libpulse)
endif()

if(VELORIA_TESTS)
  find_package(GTest REQUIRED)
  find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
  find_package(benchmark REQUIRED)
endif()
