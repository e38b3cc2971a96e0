# For pretend.cmake, read once the platform's own rules are: libraries are found by the names that they have here.
set(CMAKE_FIND_LIBRARY_PREFIXES lib)
set(CMAKE_FIND_LIBRARY_SUFFIXES .so .a)
# Where the compiler says that its libraries are, which CMake does not ask it for a Mac.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-multiarch OUTPUT_VARIABLE CMAKE_LIBRARY_ARCHITECTURE
                OUTPUT_STRIP_TRAILING_WHITESPACE)
# Qt wants OpenGL's framework; nothing of ours does.
add_library(WrapOpenGL::WrapOpenGL INTERFACE IMPORTED)
set(WrapOpenGL_FOUND TRUE)

# Only now, since with these the compiler leaves nothing behind that CMake could try.
enable_language(OBJCXX)
string(APPEND CMAKE_OBJCXX_FLAGS " ${VELORIA_OBJCXX_FLAGS}")
