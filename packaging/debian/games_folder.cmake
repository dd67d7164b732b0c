# Debian wants games in /usr/games; their tools stay in /usr/bin. The start-up script looks for the
# rest beside its own folder, and finds it from either.
set(usr "${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}")
file(MAKE_DIRECTORY "${usr}/games")
file(RENAME "${usr}/bin/brivok" "${usr}/games/brivok")
