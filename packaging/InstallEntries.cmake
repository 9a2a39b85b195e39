# SPDX-License-Identifier: Apache-2.0
# Runs at installation: installs what names the program's place, which --prefix may still have changed.
foreach(place BIN LIBEXEC DATA)
    set(OSTREL_${place} ${OSTREL_${place}DIR})
    cmake_path(ABSOLUTE_PATH OSTREL_${place} BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX})
endforeach()
string(APPEND OSTREL_LIBEXEC /ostrel)
# Desktops read /etc/xdg; below another prefix the entry waits to be linked from there.
set(autostart ${CMAKE_INSTALL_PREFIX}/etc/xdg/autostart)
# Debian's own zsh looks for the completions of its packages in a folder of its own.
set(zsh ${OSTREL_DATA}/zsh/site-functions)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(autostart /etc/xdg/autostart)
    if(EXISTS /etc/debian_version)
        set(zsh ${OSTREL_DATA}/zsh/vendor-completions)
    endif()
endif()
configure_file(${OSTREL_PACKAGING}/dbus.service.in ${OSTREL_PLACED}/dev.quent.ostrel.service @ONLY)
configure_file(${OSTREL_PACKAGING}/autostart.desktop.in ${OSTREL_PLACED}/dev.quent.ostrel.desktop @ONLY)
configure_file(${OSTREL_PACKAGING}/autostart.in ${OSTREL_PLACED}/autostart @ONLY)
file(INSTALL ${OSTREL_PLACED}/dev.quent.ostrel.service DESTINATION ${OSTREL_DATA}/dbus-1/services)
file(INSTALL ${OSTREL_PLACED}/dev.quent.ostrel.desktop DESTINATION ${autostart})
file(INSTALL ${OSTREL_PLACED}/autostart DESTINATION ${OSTREL_LIBEXEC} USE_SOURCE_PERMISSIONS
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
file(INSTALL ${OSTREL_PACKAGING}/completions/_ostrel DESTINATION ${zsh})
# A package's own triggers do this; what is installed in place has none.
if(NOT DEFINED ENV{DESTDIR} OR "$ENV{DESTDIR}" STREQUAL "")
    find_program(UPDATE_DESKTOP_DATABASE update-desktop-database)
    if(UPDATE_DESKTOP_DATABASE)
        execute_process(COMMAND ${UPDATE_DESKTOP_DATABASE} -q ${OSTREL_DATA}/applications)
    endif()
endif()
