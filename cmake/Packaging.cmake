# The Debian package: `cpack -G DEB` in the build folder writes
# tivora_<version>_<arch>.deb from the install rules of every folder, plus
# what only a package needs: the icon at the freedesktop sizes, the AppStream
# metainfo, and Debian's copyright and changelog files.
include(GNUInstallDirs)

set(TIVORA_PACKAGING_DIR ${TIVORA_SOURCE_ROOT}/packaging)

if(TIVORA_BUILD_GUI AND NOT TIVORA_FUZZ)
  # Icons are drawn from the one SVG at build time; no PNG is kept in the
  # repository. Without rsvg-convert the package ships the scalable icon only
  # (tools/test-package.sh fails on that).
  find_program(TIVORA_RSVG_CONVERT rsvg-convert)
  if(TIVORA_RSVG_CONVERT)
    set(_tivora_icons)
    foreach(size 16 24 32 48 64 128 256 512)
      set(_png ${CMAKE_BINARY_DIR}/icons/${size}x${size}/tivora.png)
      add_custom_command(OUTPUT ${_png}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/icons/${size}x${size}
        COMMAND ${TIVORA_RSVG_CONVERT} --width=${size} --height=${size} --keep-aspect-ratio
                --output=${_png} ${TIVORA_SOURCE_ROOT}/resources/tivora.svg
        DEPENDS ${TIVORA_SOURCE_ROOT}/resources/tivora.svg
        COMMENT "Drawing the ${size}x${size} icon" VERBATIM)
      list(APPEND _tivora_icons ${_png})
      install(FILES ${_png} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps)
    endforeach()
    add_custom_target(tivora-icons ALL DEPENDS ${_tivora_icons})
  else()
    message(WARNING "rsvg-convert not found (Debian: librsvg2-bin): PNG icons are not built")
  endif()

  install(FILES ${TIVORA_PACKAGING_DIR}/com.korvane.tivora.metainfo.xml
          DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
endif()

# Debian wants both in /usr/share/doc/<package>; the changelog compressed at
# the highest level without a time stamp, so that two builds give one file.
add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/packaging/changelog.gz
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/packaging
  COMMAND gzip -9 -n -c ${TIVORA_PACKAGING_DIR}/changelog > ${CMAKE_BINARY_DIR}/packaging/changelog.gz
  DEPENDS ${TIVORA_PACKAGING_DIR}/changelog
  COMMENT "Compressing the package's changelog")
add_custom_target(tivora-package-changelog ALL DEPENDS ${CMAKE_BINARY_DIR}/packaging/changelog.gz)
install(FILES ${TIVORA_PACKAGING_DIR}/copyright ${CMAKE_BINARY_DIR}/packaging/changelog.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tivora)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tivora)
set(CPACK_PACKAGE_VENDOR Korvane)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Korvane Tivora maintainers <tivora@korvane.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "player and checker for DDP disc images")
set(CPACK_PACKAGE_DESCRIPTION
    "Tivora opens the DDP folder (or a ZIP archive holding one) in which a CD
master goes to the pressing plant, shows every track, pause, index, ISRC
and CD-Text entry, and plays it at CD quality with level meters.
.
It verifies the checksum files that come with the master, checks the disc
against the rules a plant applies, measures loudness and true peak, prints
the PQ sheet as PDF, HTML, text or JSON, and exports tracks to WAV, FLAC or
MP3, or the whole disc as a cue sheet for a reference CD.
.
The package holds the desktop program, tivora, and the command-line tool
tivora-ddp (info, verify, play, export, cue, analyze, pqsheet).")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Directories the package creates get the usual 0755, whatever the umask.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_PACKAGE_NAME tivora)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://github.com/korvane/tivora)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
# Depends comes from the binaries' own libraries, through dpkg-shlibdeps.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS OFF)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

include(CPack)
