# What Debian wants of the folders of a package. Games are in /usr/games; their tools stay in
# /usr/bin. The start-up script looks for the rest beside its own folder, and finds it from either.
set(usr "${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}")
file(MAKE_DIRECTORY "${usr}/games")
file(RENAME "${usr}/bin/brivok" "${usr}/games/brivok")
# Whatever the umask of the builder, everybody may enter.
file(CHMOD_RECURSE "${usr}" DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
