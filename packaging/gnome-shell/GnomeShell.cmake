# The extension for GNOME Shell. Shells from 45 on load a module, those before it a script, and neither can load the
# other, so there are two extensions of one body; the shell lists the other one as made for another version.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${packaging}/gnome-shell/Panel.js)
file(READ ${packaging}/gnome-shell/Panel.js panel)
set(extensions ${CMAKE_BINARY_DIR}/gnome-shell)

function(gnome_shell_extension form uuid name)
  list(TRANSFORM ARGN REPLACE "(.+)" "\"\\1\"")
  list(JOIN ARGN ", " versions)
  configure_file(${packaging}/gnome-shell/metadata.json.in ${extensions}/${uuid}/metadata.json @ONLY)
  configure_file(${packaging}/gnome-shell/${form}.js.in ${extensions}/${uuid}/extension.js @ONLY)
  configure_file(${packaging}/gnome-shell/stylesheet.css ${extensions}/${uuid}/stylesheet.css COPYONLY)
  install(DIRECTORY ${extensions}/${uuid} DESTINATION ${CMAKE_INSTALL_DATADIR}/gnome-shell/extensions)
endfunction()

gnome_shell_extension(extension-45 panel@veloria.tollmere.com "Veloria" 45 46 47 48 49)
gnome_shell_extension(extension-42 panel-42@veloria.tollmere.com "Veloria (GNOME 42 to 44)" 42 43 44)
