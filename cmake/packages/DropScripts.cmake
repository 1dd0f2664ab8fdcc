# Run by CPack behind the making of the packages. CPack adds scripts that call ldconfig to packages
# with shared libraries. They ask for the trigger instead, which does the same without running
# anything of theirs, so that they can be installed into a root that has no shell.

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(unpacked "${CPACK_TEMPORARY_DIRECTORY}/unpacked")
  file(REMOVE_RECURSE "${unpacked}")
  execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${unpacked}"
    COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB scripts "${unpacked}/DEBIAN/post*")
  if(scripts)
    file(REMOVE ${scripts})
    execute_process(
      COMMAND dpkg-deb --build --root-owner-group "${unpacked}" "${package}"
      OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
