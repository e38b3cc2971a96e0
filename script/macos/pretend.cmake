# For check-macos: has CMake configure as on a Mac, with this machine's compiler and libraries. Only the .mm files are
# compiled then, against the generated declarations.
set(CMAKE_SYSTEM_NAME Darwin)
find_program(clang NAMES ${VELORIA_CLANG} clang++ REQUIRED)
set(CMAKE_CXX_COMPILER ${clang})
set(CMAKE_OBJCXX_COMPILER ${clang})
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VELORIA_CLANG)
set(CMAKE_INSTALL_NAME_TOOL true)
# What CMake looks for on a Mac is not here.
set(CMAKE_PROJECT_veloria_INCLUDE ${CMAKE_CURRENT_LIST_DIR}/pretended_packages.cmake)
