# The standard library's headers, and GoogleTest's for tests, are read once instead of in every file: a quarter of the
# time that compiling takes. VELORIA_PRECOMPILE says for whom:
#   tests   the tests alone, so that the rooms' files prove that each includes what it uses
#   all     the rooms, too: for builds beside one that has that proof
#   none    nobody
# clang-tidy can't read what gcc precompiled: for tests give it the folder of the asan preset.
set(VELORIA_PRECOMPILE tests CACHE STRING "who gets precompiled headers: tests, all or none")
set(standard_headers
  <algorithm> <array> <chrono> <cmath> <cstdint> <filesystem> <fstream> <functional> <map> <memory> <mutex> <optional>
  <span> <sstream> <stdexcept> <string> <string_view> <unordered_map> <variant> <vector>)

# What reads a precompiled header has to be compiled with the flags that it was made with. Qt asks for -fPIC.
set(precompiled_options -fPIC)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  list(APPEND precompiled_options "SHELL:-Xclang -fno-pch-timestamp") # ccache compares contents
endif()

function(veloria_precompiled target)
  cmake_parse_arguments(PRECOMPILED "" "" "HEADERS;LINK;OPTIONS" ${ARGN})
  set(source ${CMAKE_BINARY_DIR}/precompiled/${target}.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT "")
  add_library(${target} OBJECT EXCLUDE_FROM_ALL ${source})
  target_link_libraries(${target} PRIVATE ${PRECOMPILED_LINK})
  veloria_common_options(${target})
  target_compile_options(${target} PRIVATE ${precompiled_options} ${PRECOMPILED_OPTIONS})
  target_precompile_headers(${target} PRIVATE ${PRECOMPILED_HEADERS})
endfunction()

function(veloria_use_precompiled target precompiled)
  target_compile_options(${target} PRIVATE ${precompiled_options})
  target_precompile_headers(${target} REUSE_FROM ${precompiled})
endfunction()

if(VELORIA_PRECOMPILE STREQUAL all)
  veloria_precompiled(veloria_precompiled_rooms HEADERS ${standard_headers})
endif()
if(VELORIA_TESTS AND NOT VELORIA_PRECOMPILE STREQUAL none)
  veloria_precompiled(veloria_precompiled_tests
    HEADERS ${standard_headers} <gmock/gmock.h> <gtest/gtest.h>
    LINK GTest::gmock GTest::gtest_main
    OPTIONS -O0)
endif()
