# One folder is one room: a static library with an explicit source list, or headers alone. A room's headers are reached
# as "room/Header.h" through an include folder that holds links to that room's headers and nothing else. A room can
# include the headers of the rooms in its LINK and PUBLIC_LINK, and those that the latter show on; no others.

function(veloria_common_options target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(VELORIA_SANITIZE)
    target_compile_options(${target} PUBLIC -fsanitize=${VELORIA_SANITIZE} -fno-sanitize-recover=undefined
                                            -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC -fsanitize=${VELORIA_SANITIZE})
  endif()
endfunction()

# veloria_room(<name> PATH <path below src> SOURCES <files, headers included> [PUBLIC_LINK <targets>] [LINK <targets>])
# PUBLIC_LINK: what the room's headers include. LINK: what only its sources do. A room links those declared before it.
function(veloria_room name)
  cmake_parse_arguments(ROOM "" "PATH" "SOURCES;PUBLIC_LINK;LINK" ${ARGN})
  set(target veloria_${name})
  set(links ${CMAKE_BINARY_DIR}/rooms/${name})
  file(REMOVE_RECURSE ${links})
  set(headers ${ROOM_SOURCES})
  list(FILTER headers INCLUDE REGEX "\\.h$")
  foreach(header IN LISTS headers)
    get_filename_component(folder ${links}/${ROOM_PATH}/${header} DIRECTORY)
    file(MAKE_DIRECTORY ${folder})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${header} ${links}/${ROOM_PATH}/${header} SYMBOLIC)
  endforeach()
  foreach(link IN LISTS ROOM_PUBLIC_LINK ROOM_LINK)
    if(link MATCHES "^veloria_" AND NOT TARGET ${link})
      message(FATAL_ERROR "${target} links ${link}, which is not declared before it")
    endif()
  endforeach()
  if("${headers}" STREQUAL "${ROOM_SOURCES}")
    add_library(${target} INTERFACE)
    target_include_directories(${target} INTERFACE ${links})
    target_link_libraries(${target} INTERFACE ${ROOM_PUBLIC_LINK})
  else()
    add_library(${target} STATIC ${ROOM_SOURCES})
    set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
    target_include_directories(${target} PUBLIC ${links})
    target_link_libraries(${target} PUBLIC ${ROOM_PUBLIC_LINK} PRIVATE ${ROOM_LINK})
    veloria_common_options(${target})
    if(TARGET veloria_precompiled_rooms)
      veloria_use_precompiled(${target} veloria_precompiled_rooms)
    endif()
  endif()
  # For tests/house.
  set_property(GLOBAL APPEND PROPERTY VELORIA_ROOMS ${name})
  set_target_properties(${target} PROPERTIES
    VELORIA_ROOM_FOLDER ${CMAKE_CURRENT_SOURCE_DIR}
    VELORIA_ROOM_PATH ${ROOM_PATH}
    VELORIA_ROOM_SOURCES "${ROOM_SOURCES}"
    VELORIA_ROOM_PUBLIC_LINK "${ROOM_PUBLIC_LINK}"
    VELORIA_ROOM_LINK "${ROOM_LINK}")
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
