# Run by CPack on the files of the package before it is closed: what Debian's policy wants otherwise than
# cmake/Install.cmake puts it.
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
set(debian ${CMAKE_CURRENT_LIST_DIR}/../packaging/debian)
find_program(GZIP gzip REQUIRED)

file(COPY ${debian}/copyright ${debian}/changelog DESTINATION ${share}/doc/veloria)
file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)

file(GLOB documents ${share}/man/man1/* ${share}/doc/veloria/changelog)
# Without a date inside, so that the same files make the same package.
execute_process(COMMAND ${GZIP} -9n ${documents} COMMAND_ERROR_IS_FATAL ANY)
