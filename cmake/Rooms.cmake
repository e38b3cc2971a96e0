# One folder is one room: a static library with an explicit source list. A room's headers are reached as
# "room/Header.h" through an include folder that holds links to that room's headers and nothing else, so a room
# that does not list another in LINK cannot include it.

function(veloria_common_options target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(VELORIA_SANITIZE)
    target_compile_options(${target} PUBLIC -fsanitize=${VELORIA_SANITIZE} -fno-sanitize-recover=undefined
                                            -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC -fsanitize=${VELORIA_SANITIZE})
  endif()
endfunction()

# veloria_room(<name> PATH <path below src> SOURCES <files, headers included> [LINK <targets>] [PRIVATE_LINK <targets>])
function(veloria_room name)
  cmake_parse_arguments(ROOM "" "PATH" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  set(target veloria_${name})
  set(links ${CMAKE_BINARY_DIR}/rooms/${name})
  file(REMOVE_RECURSE ${links})
  foreach(source IN LISTS ROOM_SOURCES)
    if(source MATCHES "\\.h$")
      get_filename_component(folder ${links}/${ROOM_PATH}/${source} DIRECTORY)
      file(MAKE_DIRECTORY ${folder})
      file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${source} ${links}/${ROOM_PATH}/${source} SYMBOLIC)
    endif()
  endforeach()
  add_library(${target} STATIC ${ROOM_SOURCES})
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
  target_include_directories(${target} PUBLIC ${links})
  target_link_libraries(${target} PUBLIC ${ROOM_LINK} PRIVATE ${ROOM_PRIVATE_LINK})
  veloria_common_options(${target})
  if(TARGET veloria_precompiled_rooms)
    veloria_use_precompiled(${target} veloria_precompiled_rooms)
  endif()
endfunction()

# veloria_test(<name> SOURCES <files> LINK <targets> [LABELS <labels>] [DRIVER_LEAKS]): a GoogleTest program, run as one
# CTest entry. Those labelled "slow" are left out under the sanitizers. DRIVER_LEAKS: the program loads a GPU driver that
# keeps memory and is unloaded before the leak check, which then can't tell whose it is, so that check is off.
function(veloria_test name)
  cmake_parse_arguments(TEST "DRIVER_LEAKS" "" "SOURCES;LINK;LABELS" ${ARGN})
  if(VELORIA_SANITIZE AND "slow" IN_LIST TEST_LABELS)
    message(STATUS "${name}: left out under the sanitizers, it draws too much for them")
    return()
  endif()
  if(VELORIA_SANITIZE AND TEST_DRIVER_LEAKS)
    set(TEST_ENVIRONMENT "ASAN_OPTIONS=detect_leaks=0:strict_string_checks=1:detect_stack_use_after_return=1")
  endif()
  add_executable(${name} ${TEST_SOURCES})
  target_link_libraries(${name} PRIVATE ${TEST_LINK} GTest::gmock GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE
    VELORIA_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}"
    VELORIA_SHADER_LIBRARY="${VELORIA_SHADER_LIBRARY}")
  veloria_common_options(${name})
  # Tests are compiled far more often than they run long.
  target_compile_options(${name} PRIVATE -O0)
  if(TARGET veloria_precompiled_tests)
    veloria_use_precompiled(${name} veloria_precompiled_tests)
  endif()
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES LABELS "${TEST_LABELS}" ENVIRONMENT "${TEST_ENVIRONMENT}" TIMEOUT 300)
endfunction()
