# What `cmake --install` puts in place: the programs, the desktop entry with its icon, and
# the udev rules that let the user at the seat open the device's port. udev reads rules
# from /usr/lib/udev/rules.d and /etc/udev/rules.d only, so with the default prefix
# /usr/local point MRVTQ5DK_UDEV_RULES_DIR at one of those (or install with --prefix /usr).
include(GNUInstallDirs)
set(MRVTQ5DK_UDEV_RULES_DIR "lib/udev/rules.d"
    CACHE PATH "Where the udev rules go (relative paths are under the prefix)")

install(TARGETS Mrvtq5dk mrvtq5dk-cli qm482-sim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES resources/linux/mrvtq5dk.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES resources/linux/mrvtq5dk.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES resources/linux/70-mrvtq5dk.rules DESTINATION ${MRVTQ5DK_UDEV_RULES_DIR})
