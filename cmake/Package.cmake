# The diver's Debian package, written by CPack's DEB generator (./scripts/package.sh).
# What the programs link is worked out from the binaries by dpkg-shlibdeps; what Qt loads
# at run time is named here, since no binary links it.
if(APPLE)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME mrvtq5dk)
set(CPACK_PACKAGE_VENDOR "Mrvtq5dk developers")
set(CPACK_PACKAGE_CONTACT "Mrvtq5dk developers <developers@mrvtq5dk.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "voice clips and dive logs from a Corvamund QM482")
set(CPACK_PACKAGE_DESCRIPTION
    "Mrvtq5dk takes the voice clips and dive logs off a Corvamund QM482 diving
device plugged in by USB, and keeps them in the Downloads folder: clips as
WAV files, dives as CSV files. A library remembers what was saved, so that
Save all new fetches only what is missing. The window draws a dive's profile
with the clips recorded during it, plays the clips, and exports the dives as
a UDDF 3.2.3 logbook. The command line mrvtq5dk-cli does the same without a
window.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${MRVTQ5DK_HOMEPAGE}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Added to what the binaries link: QtSql's SQLite driver is a plugin, loaded by name, and
# Qt's own words (the file dialog's, the standard buttons') in the desktop's language are
# tables read at start. Qt Multimedia's sound output and its backends come with
# libqt6multimedia6, which the window links, and Qt's platform plugins (a desktop's and
# offscreen) with libqt6gui6.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6sql6-sqlite, qt6-translations-l10n")
# Japanese text needs a CJK font; on Wayland, Qt draws natively with its Wayland plugin.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-noto-cjk, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/packaging/debian/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

include(CPack)
