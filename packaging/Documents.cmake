# The documents that Debian requires in a package: copyright, change logs and compressed man pages.
# CPack includes this file between installing and packing; SOURCE_DATE_EPOCH is the time of the
# packages.

# Group write permission of the sources must not get into packages.
execute_process(COMMAND chmod -R go-w "${CPACK_TEMPORARY_INSTALL_DIRECTORY}" COMMAND_ERROR_IS_FATAL ANY)
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  set(root "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr")
  set(documents "${root}/share/doc/${component}")
  file(COPY "${CPACK_CVN_SOURCE}/packaging/copyright" DESTINATION "${documents}")
  configure_file("${CPACK_CVN_SOURCE}/CHANGELOG.md" "${documents}/changelog" COPYONLY)
  file(WRITE "${documents}/changelog.Debian"
"${component} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) stable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}; its changes are in changelog.gz.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  # The programs in Python print their man pages.
  foreach(program IN ITEMS cvnreport cvnhalcheck)
    if(IS_SYMLINK "${root}/bin/${program}")
      file(MAKE_DIRECTORY "${root}/share/man/man1")
      execute_process(COMMAND "${root}/bin/${program}" --document
        OUTPUT_FILE "${root}/share/man/man1/${program}.1" COMMAND_ERROR_IS_FATAL ANY)
      set(PROGRAM ${program})
      set(HELP --help)
      configure_file("${CPACK_CVN_SOURCE}/packaging/completion.in"
        "${root}/share/bash-completion/completions/${program}" @ONLY)
    endif()
  endforeach()
  # The program that cvnboard starts; only the name differs.
  if(EXISTS "${root}/bin/cvnboard")
    execute_process(
      COMMAND help2man --no-info --version-string=${CPACK_PACKAGE_VERSION}
        "--name=switch on a simulated board and run a program there"
        "${root}/lib/cvntester-sim/sim/board/board-run"
      COMMAND sed -e "s/board-run/cvnboard/g; s/BOARD-RUN/CVNBOARD/g; s/board\\\\-run/cvnboard/g"
      OUTPUT_FILE "${root}/share/man/man1/cvnboard.1" COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(GLOB pages "${root}/share/man/man*/*")
  execute_process(COMMAND gzip -9n ${pages} "${documents}/changelog" "${documents}/changelog.Debian"
    COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB_RECURSE files "${root}/share/doc/*")
  file(CHMOD ${files} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endforeach()
