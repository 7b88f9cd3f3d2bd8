# What `cmake --install` puts in place.
include(GNUInstallDirs)

if(APPLE)
  # Mrvtq5dk.app with Qt inside it (macdeployqt), then signed with its sandbox entitlements:
  # ad hoc unless MRVTQ5DK_SIGN_IDENTITY names a certificate. Signing comes last, since
  # macdeployqt changes the bundle.
  set(MRVTQ5DK_SIGN_IDENTITY "-" CACHE STRING "codesign identity for Mrvtq5dk.app")
  find_program(MACDEPLOYQT macdeployqt HINTS "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_BINS}" REQUIRED)
  set(entitlements ${PROJECT_SOURCE_DIR}/resources/macos/Mrvtq5dk.entitlements)
  install(TARGETS Mrvtq5dk BUNDLE DESTINATION .)
  install(TARGETS mrvtq5dk-cli qm482-sim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(CODE "
    set(bundle \"\${CMAKE_INSTALL_PREFIX}/Mrvtq5dk.app\")
    execute_process(COMMAND \"${MACDEPLOYQT}\" \"\${bundle}\" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND codesign --force --deep --options runtime
                            --entitlements \"${entitlements}\"
                            --sign \"${MRVTQ5DK_SIGN_IDENTITY}\" \"\${bundle}\"
                    COMMAND_ERROR_IS_FATAL ANY)")
else()
  # The programs, the desktop entry with its icon, and the udev rules that let the user at
  # the seat open the device's port. udev reads rules from /usr/lib/udev/rules.d and
  # /etc/udev/rules.d only, so with the default prefix /usr/local point
  # MRVTQ5DK_UDEV_RULES_DIR at one of those (or install with --prefix /usr).
  set(MRVTQ5DK_UDEV_RULES_DIR "lib/udev/rules.d"
      CACHE PATH "Where the udev rules go (relative paths are under the prefix)")
  install(TARGETS Mrvtq5dk mrvtq5dk-cli qm482-sim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES resources/linux/mrvtq5dk.desktop
          DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES resources/linux/mrvtq5dk.svg
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
  install(FILES resources/linux/70-mrvtq5dk.rules DESTINATION ${MRVTQ5DK_UDEV_RULES_DIR})
endif()
