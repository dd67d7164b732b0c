# The Debian package: cmake --build --preset release --target package
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME brivok)
set(CPACK_PACKAGE_CONTACT "Brivok developers <brivok@example.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "chess engine for WinBoard and UCI interfaces")
string(JOIN "\n" CPACK_PACKAGE_DESCRIPTION
  "Brivok is a classical chess engine: bitboards, alpha-beta search and a"
  "hand-weighted evaluation. A chess interface such as xboard, PyChess, Scid or"
  "Cute Chess starts it and speaks WinBoard or UCI to it. It plays normal chess,"
  "Fischer-random chess and chess without castling."
  ""
  "With it come its opening book, the smallest endgame tables and test positions,"
  "and tools that build opening books and endgame tables.")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS xboard)
set(CPACK_DEBIAN_PACKAGE_ENHANCES "xboard, pychess, scid")
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_SOURCE_DIR}/debian/tree.cmake")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_SOURCE_DIR}/debian/postinst")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# These go into the package only, not into every installation.
configure_file(debian/changelog.in debian/changelog @ONLY)
install_text("${CMAKE_CURRENT_BINARY_DIR}/debian/changelog" changelog.Debian
  "${CMAKE_INSTALL_DOCDIR}" COMPONENT debian EXCLUDE_FROM_ALL)
install(FILES debian/lintian-overrides DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides"
  RENAME brivok COMPONENT debian EXCLUDE_FROM_ALL)
set(CPACK_INSTALL_CMAKE_PROJECTS
  "${CMAKE_BINARY_DIR};brivok;ALL;/" "${CMAKE_BINARY_DIR};brivok;debian;/")

include(CPack)
