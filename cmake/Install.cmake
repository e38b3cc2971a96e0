# Where everything goes: `cmake --install build/release --prefix P`. The program looks for its shader library in
# ../share/veloria from where it stands, so the folder P can be moved as a whole.
if(APPLE)
  return()  # ./build.sh makes an application bundle there
endif()
include(GNUInstallDirs)
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(packaging ${CMAKE_SOURCE_DIR}/packaging)

install(TARGETS veloria nimbra DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${VELORIA_SHADER_LIBRARY} DESTINATION ${CMAKE_INSTALL_DATADIR}/veloria)

install(FILES ${packaging}/man/veloria.1 ${packaging}/man/nimbra.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
foreach(program veloria nimbra)
  install(FILES ${packaging}/completions/${program}.bash RENAME ${program}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${packaging}/completions/_${program} DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES ${packaging}/completions/${program}.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endforeach()

install(FILES ${packaging}/com.tollmere.Veloria.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${packaging}/com.tollmere.Veloria.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(DIRECTORY ${packaging}/icons/hicolor DESTINATION ${CMAKE_INSTALL_DATADIR}/icons)
# systemd knows no other folder than lib for this, whatever the libraries' folder is called.
install(FILES ${packaging}/veloria.service DESTINATION lib/systemd/user)

include(${packaging}/gnome-shell/GnomeShell.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/Package.cmake)
