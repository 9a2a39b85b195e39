# SPDX-License-Identifier: Apache-2.0
# The Debian package: cpack -G DEB in a build tree.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ostrel)
set(CPACK_PACKAGE_VENDOR "The Ostrel developers")
set(CPACK_PACKAGE_CONTACT "The Ostrel developers <ostrel@quent.example>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_HOMEPAGE_URL ${PROJECT_HOMEPAGE_URL})
set(CPACK_STRIP_FILES ON)
# Beside the program the changelog that only Debian asks for; without the byte code, which is made at installation.
set(CPACK_INSTALL_CMAKE_PROJECTS
    "${PROJECT_BINARY_DIR};ostrel;Unspecified;/;${PROJECT_BINARY_DIR};ostrel;debian;/")
# As an installation into /usr that a DESTDIR catches: part of it belongs to /etc.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${OSTREL_BUILD})
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "python3 (>= 3.9)")
if(OSTREL_HAS_RELATIVE_RELOCATIONS)
    # The first that reads relocations as a bitmap, which the list of symbols doesn't tell.
    string(APPEND CPACK_DEBIAN_PACKAGE_DEPENDS ", libc6 (>= 2.36)")
endif()
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "default-dbus-session-bus | dbus-session-bus, fonts-dejavu-core, openssh-client, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "gnome-shell-extension-appindicator, libglib2.0-bin, tmux")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/postinst ${CMAKE_CURRENT_LIST_DIR}/debian/prerm
    ${CMAKE_CURRENT_LIST_DIR}/debian/conffiles)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "memory instrument for machines on which coding agents run")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"A small item in the desktop's bar carries live numbers, and a panel of nine
tabs shows how much room the machine has, what is taking it, and what can
safely be given back: memory, swap, load and pressure, the top processes,
the sessions of coding agents and their tool servers, scheduled jobs, and
cleanups that list exactly what would go before anything goes.
.
Nothing listens on a port, and readings stay on the machine.")
include(CPack)
