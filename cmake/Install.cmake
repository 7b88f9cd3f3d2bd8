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
  # The programs, the desktop entry with its icon and AppStream metainfo, the manual pages,
  # the command line's bash completion, and the udev rules that let the user at the seat
  # open the device's port. udev reads rules from /usr/lib/udev/rules.d and
  # /etc/udev/rules.d only, so with the default prefix /usr/local point
  # MRVTQ5DK_UDEV_RULES_DIR at one of those (or install with --prefix /usr). The simulator
  # is a developer's tool: `cmake --install build --component simulator` installs it.
  set(MRVTQ5DK_UDEV_RULES_DIR "lib/udev/rules.d"
      CACHE PATH "Where the udev rules go (relative paths are under the prefix)")
  set(MRVTQ5DK_HOMEPAGE "https://github.com/mrvtq5dk/mrvtq5dk"
      CACHE STRING "Where the project is published (the metainfo's home page)")
  set(MRVTQ5DK_SCREENSHOTS "https://raw.githubusercontent.com/mrvtq5dk/mrvtq5dk/main/docs"
      CACHE STRING "Where the pictures in docs/ are published (the metainfo's screenshots)")
  set(linux ${PROJECT_SOURCE_DIR}/resources/linux)
  install(TARGETS Mrvtq5dk mrvtq5dk-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(TARGETS qm482-sim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
          COMPONENT simulator EXCLUDE_FROM_ALL)
  install(FILES ${linux}/mrvtq5dk.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES ${linux}/mrvtq5dk.svg
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
  install(FILES ${linux}/70-mrvtq5dk.rules DESTINATION ${MRVTQ5DK_UDEV_RULES_DIR})
  install(FILES ${linux}/mrvtq5dk-cli.bash-completion
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME mrvtq5dk-cli)

  # The release in the metainfo is this version's entry in the package's changelog.
  file(STRINGS ${PROJECT_SOURCE_DIR}/packaging/debian/changelog changelog)
  list(GET changelog 0 heading)
  if(NOT heading MATCHES "^mrvtq5dk \\(${PROJECT_VERSION}\\) ")
    message(FATAL_ERROR "packaging/debian/changelog starts with \"${heading}\": "
                        "give version ${PROJECT_VERSION} an entry first")
  endif()
  list(FILTER changelog INCLUDE REGEX "^ -- ")
  list(GET changelog 0 trailer)
  string(REGEX REPLACE "^ -- .*>  " "" released "${trailer}")
  execute_process(COMMAND date -u -d "${released}" +%F OUTPUT_VARIABLE MRVTQ5DK_RELEASE_DATE
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  configure_file(${linux}/com.mrvtq5dk.Mrvtq5dk.metainfo.xml.in
                 ${PROJECT_BINARY_DIR}/com.mrvtq5dk.Mrvtq5dk.metainfo.xml @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/com.mrvtq5dk.Mrvtq5dk.metainfo.xml
          DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

  # Manual pages and the changelog are kept compressed, as Debian keeps them.
  set(compressed)
  foreach(source ${linux}/Mrvtq5dk.1 ${linux}/mrvtq5dk-cli.1
                 ${PROJECT_SOURCE_DIR}/packaging/debian/changelog)
    get_filename_component(name ${source} NAME)
    set(target ${PROJECT_BINARY_DIR}/compressed/${name}.gz)
    add_custom_command(OUTPUT ${target} DEPENDS ${source}
                       COMMAND sh -c "gzip -9nc \"$1\" > \"$2\"" _ ${source} ${target} VERBATIM)
    list(APPEND compressed ${target})
  endforeach()
  add_custom_target(mrvtq5dk_compressed_docs ALL DEPENDS ${compressed})
  install(FILES ${PROJECT_BINARY_DIR}/compressed/Mrvtq5dk.1.gz
                ${PROJECT_BINARY_DIR}/compressed/mrvtq5dk-cli.1.gz
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${PROJECT_BINARY_DIR}/compressed/changelog.gz
                ${PROJECT_SOURCE_DIR}/packaging/debian/copyright
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/mrvtq5dk)
endif()
