# Run by cpack after packing: it gives packages of libraries scripts that call ldconfig, and they have a trigger for that,
# which runs it once for all packages that are installed together.

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(root "${package}.unpacked")
  execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${root}" COMMAND_ERROR_IS_FATAL ANY)
  if(EXISTS "${root}/DEBIAN/triggers")
    file(REMOVE "${root}/DEBIAN/postinst" "${root}/DEBIAN/postrm")
    execute_process(COMMAND dpkg-deb --root-owner-group --build "${root}" "${package}" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(REMOVE_RECURSE "${root}")
endforeach()
