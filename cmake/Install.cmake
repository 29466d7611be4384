# Where `cmake --install` puts the program and what the desktop needs to show
# it, and the Debian package CPack builds from that.
include(GNUInstallDirs)

set(TALLIS_APP_ID org.brightwater.Tallis)
set(_res ${PROJECT_SOURCE_DIR}/resources)
install(FILES ${_res}/${TALLIS_APP_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${_res}/${TALLIS_APP_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
foreach(size 16 24 32 48 64 128 256)
    install(FILES ${_res}/icons/${size}x${size}/${TALLIS_APP_ID}.png
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps)
endforeach()

# "0.2.3-BETA" in Debian's spelling: the tilde sorts a pre-release before 0.2.3.
string(TOLOWER "${PROJECT_VERSION}~beta" _deb_version)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tallis)
set(CPACK_PACKAGE_VENDOR Brightwater)
set(CPACK_PACKAGE_VERSION ${_deb_version})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Hunt portable amateur-radio stations and tune to them")
set(CPACK_PACKAGE_DESCRIPTION
    "Tallis gathers live spots of POTA, SOTA, WWFF, WWBOTA and GMA activators and of telnet DX\n"
    "clusters into one filterable table, tunes the radio through Hamlib with one key, marks and\n"
    "logs contacts, and serves a local WebSocket JSON API.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT) # tallis_<version>_<arch>.deb
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Brightwater <tallis@brightwater.example>")
set(CPACK_DEBIAN_PACKAGE_SECTION hamradio)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Dependencies are read off the shared libraries the program links (dpkg-shlibdeps).
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS OFF)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
include(CPack)
