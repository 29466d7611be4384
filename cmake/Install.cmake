# Where `cmake --install` puts the program and what the desktop needs to show
# it, and the Debian package CPack builds from that.
include(GNUInstallDirs)

set(TALLIS_APP_ID org.brightwater.Tallis)
set(_res ${PROJECT_SOURCE_DIR}/resources)
set(_gen ${PROJECT_BINARY_DIR}/generated/package)

# "0.2.3-BETA" in Debian's spelling: the tilde sorts a pre-release before 0.2.3.
string(TOLOWER "${PROJECT_VERSION}~beta" TALLIS_DEB_VERSION)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Brightwater <tallis@brightwater.example>")

# The release is dated by the build time the About box shows, never by the
# clock of the machine that builds: string(TIMESTAMP) reads SOURCE_DATE_EPOCH.
set(_saved_epoch "$ENV{SOURCE_DATE_EPOCH}")
set(ENV{SOURCE_DATE_EPOCH} "${TALLIS_BUILD_TIME}")
string(TIMESTAMP TALLIS_RELEASE_DATE "%Y-%m-%d" UTC)
string(TIMESTAMP TALLIS_RELEASE_TIME_RFC2822 "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(ENV{SOURCE_DATE_EPOCH} "${_saved_epoch}")

configure_file(${_res}/${TALLIS_APP_ID}.metainfo.xml.in ${_gen}/${TALLIS_APP_ID}.metainfo.xml @ONLY)
configure_file(${_res}/package/changelog.in ${_gen}/changelog @ONLY)
configure_file(${_res}/package/tallis.1.in ${_gen}/tallis.1 @ONLY)
# Debian wants the changelog and the manual compressed, and without a time
# stamp or file name in the gzip header, so that the same sources make the
# same package. Built with the program, which is what packaging builds.
add_custom_command(OUTPUT ${_gen}/changelog.gz ${_gen}/tallis.1.gz
    COMMAND gzip -9nkf ${_gen}/changelog ${_gen}/tallis.1
    DEPENDS ${_gen}/changelog ${_gen}/tallis.1
    COMMENT "Compressing the changelog and the manual page"
    VERBATIM)
add_custom_target(tallis_package_docs DEPENDS ${_gen}/changelog.gz ${_gen}/tallis.1.gz)
add_dependencies(tallis tallis_package_docs)

install(FILES ${_res}/${TALLIS_APP_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${_gen}/${TALLIS_APP_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${_gen}/tallis.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${_res}/package/copyright ${_gen}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tallis)
foreach(size 16 24 32 48 64 128 256)
    install(FILES ${_res}/icons/${size}x${size}/${TALLIS_APP_ID}.png
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tallis)
set(CPACK_PACKAGE_VENDOR Brightwater)
set(CPACK_PACKAGE_VERSION ${TALLIS_DEB_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Hunt portable amateur-radio stations and tune to them")
# One string of lines under 80 columns: separate quoted pieces would make a
# CMake list, whose ";" separators would show in the package's description.
string(JOIN "\n" CPACK_PACKAGE_DESCRIPTION
    "Tallis gathers live spots of POTA, SOTA, WWFF, WWBOTA and GMA activators"
    "and of telnet DX clusters into one filterable table, tunes the radio"
    "through Hamlib with one key, marks and logs contacts, and serves a local"
    "WebSocket JSON API.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT) # tallis_<version>_<arch>.deb
set(CPACK_DEBIAN_PACKAGE_SECTION hamradio)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Dependencies are read off the shared libraries the program links (dpkg-shlibdeps).
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS OFF)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
include(CPack)
