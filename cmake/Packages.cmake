# SPDX-FileCopyrightText: 2026 The TavrinViewer authors
# SPDX-License-Identifier: Apache-2.0

# What is installed beside the programs, and the Debian packages tavrin-viewer and tavrin-hostd;
# packaging/make-packages makes them.
include(GNUInstallDirs)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The TavrinViewer authors <tavrin-viewer@example.org>")
set(CPACK_PACKAGE_VENDOR "The TavrinViewer authors")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL viewer hostd)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
if(CMAKE_CROSSCOMPILING)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
    # Where dpkg-shlibdeps finds the device's libraries; make-packages tells it whose they are.
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
        ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}
        ${CMAKE_SYSROOT}/lib/${CMAKE_LIBRARY_ARCHITECTURE})
endif()

set(CPACK_DEBIAN_VIEWER_PACKAGE_NAME tavrin-viewer)
set(CPACK_DEBIAN_VIEWER_PACKAGE_SECTION science)
set(CPACK_COMPONENT_VIEWER_DESCRIPTION
    "touch tool to watch, steer and test a GNSS receiver
Fills a touch screen with the state of a GNSS receiver: position, DOP, sky
plot and C/N0 bars. Starts, stops and resets the receiver, chooses its
constellations and measures times to first fix. Reads NMEA 0183 text from a
named pipe and writes command sentences into another.")
set(CPACK_DEBIAN_VIEWER_PACKAGE_DEPENDS adduser)
set(CPACK_DEBIAN_VIEWER_PACKAGE_RECOMMENDS "dbus, fonts-dejavu-core")
set(CPACK_DEBIAN_VIEWER_PACKAGE_SUGGESTS tavrin-hostd)

set(CPACK_DEBIAN_HOSTD_PACKAGE_NAME tavrin-hostd)
set(CPACK_DEBIAN_HOSTD_PACKAGE_SECTION science)
set(CPACK_COMPONENT_HOSTD_DESCRIPTION
    "receiver for TavrinViewer on machines without the device
Plays the device's host daemon behind the two named pipes of TavrinViewer:
a GNSS receiver at a serial line, USB, gpsd or the network, a simulated one
that obeys every command of the viewer, or a recording of any NMEA 0183
receiver.")
set(CPACK_DEBIAN_HOSTD_PACKAGE_SUGGESTS tavrin-viewer)

configure_file(packaging/debian/changelog.in packaging/changelog.Debian @ONLY)
find_program(GZIP_EXECUTABLE gzip REQUIRED)
mark_as_advanced(GZIP_EXECUTABLE)

# viewer_compress(FILE NAME): FILE as NAME.gz in the build folder, without name and time in it.
function(viewer_compress file name)
    file(REAL_PATH ${file} source BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
    set(compressed ${PROJECT_BINARY_DIR}/packaging/${name}.gz)
    add_custom_command(OUTPUT ${compressed}
        COMMAND ${GZIP_EXECUTABLE} -9nc ${source} > ${compressed}
        DEPENDS ${source} VERBATIM)
    set_property(GLOBAL APPEND PROPERTY VIEWER_COMPRESSED ${compressed})
endfunction()

viewer_compress(${PROJECT_BINARY_DIR}/packaging/changelog.Debian changelog.Debian)
viewer_compress(docs/man/tavrin-viewer.1 tavrin-viewer.1)
viewer_compress(docs/man/tavrin-hostd.1 tavrin-hostd.1)
get_property(compressed GLOBAL PROPERTY VIEWER_COMPRESSED)
add_custom_target(package-files ALL DEPENDS ${compressed})

foreach(component viewer hostd)
    set(package tavrin-${component})
    string(TOUPPER ${component} COMPONENT)
    set(scripts ${PROJECT_SOURCE_DIR}/packaging/debian/${package})
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_CONTROL_EXTRA
        ${scripts}/conffiles ${scripts}/postinst ${scripts}/prerm ${scripts}/postrm)
    install(FILES ${PROJECT_BINARY_DIR}/packaging/${package}.1.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component} OPTIONAL)
    install(FILES packaging/debian/${package}/lintian-overrides
        DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${package}
        COMPONENT ${component})
    install(FILES packaging/debian/copyright ${PROJECT_BINARY_DIR}/packaging/changelog.Debian.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component} OPTIONAL)
endforeach()

install(FILES packaging/files/tavrin-viewer.desktop
    DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT viewer)
install(FILES packaging/files/tavrin-viewer.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT viewer)
install(FILES packaging/files/tavrin-viewer.conf
    DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/system.d COMPONENT viewer)

# Settings, services and folders of the system: parts of a package only, as `cmake --install` may
# have another prefix.
option(VIEWER_SYSTEM_FILES "Install what belongs below /etc, /lib and /var" OFF)
if(VIEWER_SYSTEM_FILES)
    install(FILES packaging/files/config.xml DESTINATION /etc COMPONENT viewer)
    install(DIRECTORY DESTINATION /var/log/tavrin-viewer COMPONENT viewer)
    foreach(component viewer hostd)
        set(package tavrin-${component})
        install(FILES packaging/files/${package}.default
            DESTINATION /etc/default RENAME ${package} COMPONENT ${component})
        install(FILES packaging/files/${package}.service
            DESTINATION /lib/systemd/system COMPONENT ${component})
    endforeach()
endif()

include(CPack)
