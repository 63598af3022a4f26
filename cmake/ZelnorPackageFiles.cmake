# Run by cpack between installing the components and packing them: what Debian asks of a package beside the files that an
# installation has. The symbols files say since which version a symbol is there; they are made from what is packed, as
# all symbols of a major version are there since its first release until one says otherwise.

file(GLOB staged LIST_DIRECTORIES true "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*")
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)

foreach(root IN LISTS staged)
  get_filename_component(package "${root}" NAME)
  # The dynamic linker finds what is in a folder of the system.
  file(GLOB binaries "${root}/usr/bin/*" "${root}/usr/lib/*.so.*" "${root}/usr/lib/*/*.so.*")
  set(libraries "")
  foreach(binary IN LISTS binaries)
    if(NOT IS_SYMLINK "${binary}")
      file(CHMOD "${binary}" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
      file(RPATH_REMOVE FILE "${binary}")
      execute_process(COMMAND strip --remove-section=.comment --remove-section=.note "${binary}" COMMAND_ERROR_IS_FATAL ANY)
      if(binary MATCHES "[.]so[.]")
        file(CHMOD "${binary}" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
        list(APPEND libraries "-e${binary}")
      endif()
    endif()
  endforeach()

  file(GLOB pages "${root}/usr/share/man/man1/*.1")
  if(pages)
    execute_process(COMMAND gzip -9nf ${pages} COMMAND_ERROR_IS_FATAL ANY)
  endif()

  set(documents "${root}/usr/share/doc/${package}")
  file(READ "${CPACK_ZELNOR_SOURCE_DIR}/LICENSE" licence)
  string(REGEX MATCH "Copyright [^\n]*" copyright "${licence}")
  string(REGEX REPLACE "^Copyright (\\([cC]\\) )?" "" copyright "${copyright}")
  string(REGEX REPLACE "^.*Permission is" "Permission is" licence "${licence}")
  string(REGEX REPLACE "\n\n" "\n.\n" licence "${licence}")
  string(STRIP "${licence}" licence)
  string(REPLACE "\n" "\n " licence "${licence}")
  file(WRITE "${documents}/copyright"
       "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n\nFiles: *\nCopyright: (c) ${copyright}\nLicense: Expat\n\nLicense: Expat\n ${licence}\n")
  file(WRITE "${documents}/changelog.Debian"
       "zelnor (${CPACK_PACKAGE_VERSION}-1) unstable; urgency=medium\n\n  * New release.\n\n -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
  execute_process(COMMAND gzip -9nf "${documents}/changelog.Debian" COMMAND_ERROR_IS_FATAL ANY)
  # Nobody asked Debian for a package that this upload would give them.
  set(overrides "${package}: initial-upload-closes-no-bugs *\n")
  if(libraries)
    string(PREPEND overrides "# Libraries that are released together are one package, with the project's name.\n"
                             "${package}: package-name-doesnt-match-sonames *\n")
  endif()
  file(WRITE "${root}/usr/share/lintian/overrides/${package}" "${overrides}")
  # The documents of all packages are with the headers.
  if(EXISTS "${root}/usr/share/doc/Zelnor")
    file(REMOVE "${root}/usr/share/doc/Zelnor/LICENSE")
    file(GLOB contents "${root}/usr/share/doc/Zelnor/*")
    file(COPY ${contents} DESTINATION "${documents}")
    file(RENAME "${documents}/CHANGELOG.md" "${documents}/changelog")
    execute_process(COMMAND gzip -9nf "${documents}/changelog" COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE "${root}/usr/share/doc/Zelnor")
  endif()

  if(libraries)
    set(control "${CPACK_ZELNOR_CONTROL_DIR}/${package}")
    file(WRITE "${control}/triggers" "activate-noawait ldconfig\n")
    set(shlibs "")
    foreach(library IN LISTS libraries)
      string(REGEX REPLACE "^.*/(lib[A-Za-z]+)[.]so[.]([0-9]+).*$" "\\1 \\2 ${package} (>= ${CPACK_PACKAGE_VERSION})\n" line "${library}")
      string(APPEND shlibs "${line}")
    endforeach()
    file(WRITE "${control}/shlibs" "${shlibs}")
    # dpkg-gensymbols wants to be where a source package is.
    file(WRITE "${control}/debian/control"
         "Source: zelnor\nMaintainer: ${CPACK_PACKAGE_CONTACT}\n\nPackage: ${package}\nArchitecture: any\nDescription: libraries\n")
    file(WRITE "${control}/debian/changelog"
         "zelnor (${CPACK_PACKAGE_VERSION}-1) unstable; urgency=medium\n\n  * New release.\n\n -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
    execute_process(
      COMMAND dpkg-gensymbols -q "-p${package}" "-v${CPACK_PACKAGE_VERSION}" ${libraries} "-O${control}/symbols"
      WORKING_DIRECTORY "${control}" COMMAND_ERROR_IS_FATAL ANY)
    file(READ "${control}/symbols" symbols)
    string(REGEX REPLACE "(\n|^)(lib[^\n]*#MINVER#\n)" "\\1\\2* Build-Depends-Package: libzelnor-dev\n" symbols "${symbols}")
    file(WRITE "${control}/symbols" "${symbols}")
    file(CHMOD "${control}/symbols" "${control}/shlibs" "${control}/triggers" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  endif()
endforeach()
