# Debian packages, built with `cpack -G DEB` in a release tree (scripts/package does it all):
#   zorvane        the program, its udev rule, desktop entry, icon and AppStream metainfo
#   zorvane-tools  the virtual mouse (mouse-sim, and mouse-window with its control window) and
#                  the stand-in services (zorvane-services), for trying Zorvane without the mouse
#                  or without accounts
set(ZORVANE_APP_ID "io.github.zorvane.Zorvane")
set(pkg ${CMAKE_CURRENT_LIST_DIR})
set(pkg_out ${CMAKE_BINARY_DIR}/packaging)
file(MAKE_DIRECTORY ${pkg_out})

# A new project version needs its entry in the changelog and the metainfo's releases.
file(STRINGS ${pkg}/changelog changelog_top LIMIT_COUNT 1)
file(READ ${pkg}/zorvane.metainfo.xml metainfo)
if(NOT changelog_top MATCHES "\\(${PROJECT_VERSION}-1\\)" OR NOT metainfo MATCHES "version=\"${PROJECT_VERSION}\"")
  message(WARNING "packaging/changelog and packaging/zorvane.metainfo.xml need an entry for ${PROJECT_VERSION}")
endif()

# The changelog and manual page are installed gzipped, reproducibly (no name, no time).
foreach(source changelog zorvane.1 mouse-sim.1 mouse-window.1 zorvane-services.1)
  execute_process(COMMAND gzip -n -9 -c ${pkg}/${source} OUTPUT_FILE ${pkg_out}/${source}.gz
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  ${pkg}/changelog ${pkg}/zorvane.1 ${pkg}/mouse-sim.1 ${pkg}/mouse-window.1 ${pkg}/zorvane-services.1)

# Directories as Debian has them, whatever the packager's umask.
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

install(FILES ${pkg}/70-zorvane.rules DESTINATION lib/udev/rules.d COMPONENT zorvane)
install(FILES ${pkg}/zorvane.desktop DESTINATION share/applications COMPONENT zorvane)
install(FILES ${PROJECT_SOURCE_DIR}/src/resources/console/logo.svg
  DESTINATION share/icons/hicolor/scalable/apps RENAME zorvane.svg COMPONENT zorvane)
install(FILES ${pkg}/zorvane.metainfo.xml
  DESTINATION share/metainfo RENAME ${ZORVANE_APP_ID}.metainfo.xml COMPONENT zorvane)
install(FILES ${pkg_out}/zorvane.1.gz DESTINATION share/man/man1 COMPONENT zorvane)
install(FILES ${pkg_out}/mouse-sim.1.gz ${pkg_out}/mouse-window.1.gz ${pkg_out}/zorvane-services.1.gz
  DESTINATION share/man/man1 COMPONENT tools)
foreach(component zorvane tools)
  if(component STREQUAL "tools")
    set(doc share/doc/zorvane-tools)
  else()
    set(doc share/doc/zorvane)
  endif()
  install(FILES ${pkg}/copyright DESTINATION ${doc} COMPONENT ${component})
  install(FILES ${pkg_out}/changelog.gz DESTINATION ${doc} RENAME changelog.Debian.gz COMPONENT ${component})
endforeach()

set(CPACK_PACKAGE_NAME zorvane)
# All four parts: the version the program reports and the backend compares.
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "Zorvane developers")
set(CPACK_PACKAGE_CONTACT "Zorvane developers <maintainers@zorvane.example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL zorvane tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://github.com/zorvane/zorvane-linux")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_ZORVANE_PACKAGE_NAME zorvane)
# What the library scan cannot see (Qt plugins, programs): the database and the SVG
# pictures of every window are needed; the rest makes sound, images and Chinese text right,
# finds the caret and opens web pages.
set(CPACK_DEBIAN_ZORVANE_PACKAGE_DEPENDS "libqt5sql5-sqlite, libqt5svg5")
# One line: a control field that runs on over lines is an error to dpkg's tools.
string(JOIN ", " CPACK_DEBIAN_ZORVANE_PACKAGE_RECOMMENDS
  fonts-wqy-microhei qt5-image-formats-plugins libqt5multimedia5-plugins
  gstreamer1.0-plugins-good gstreamer1.0-pulseaudio at-spi2-core xdg-utils)
set(CPACK_DEBIAN_ZORVANE_PACKAGE_SUGGESTS "zorvane-tools")
set(CPACK_DEBIAN_ZORVANE_DESCRIPTION "desktop companion of a voice mouse
Zorvane types what you say into the window you are working in while you hold
the voice key of its mouse, obeys voice commands, translates speech and
selected text and reads text aloud. It also manages the mouse: resolution,
lamplight, vibration, battery notices, pairing and updates.
.
The mouse is reached through its USB receiver or over Bluetooth LE; the udev
rule in this package gives the user at the seat access to it. Needs an X11
session.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME zorvane-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
# The window's microphone needs Qt's sound input plugins.
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "espeak-ng, pocketsphinx-en-us, libqt5multimedia5-plugins")
set(CPACK_DEBIAN_TOOLS_PACKAGE_ENHANCES "zorvane")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "virtual mouse and stand-in services for Zorvane
mouse-sim plays the voice mouse and its receiver on a local socket,
mouse-window does the same in a small window whose talk buttons let the
mouse hear the microphone, and zorvane-services answers, on the loopback
interface, every outside service that Zorvane calls on (speech recognition,
translation, synthesis, backend). Together they let Zorvane be tried,
demonstrated and tested on one machine without the mouse and without any
account.")

include(CPack)
