# CPack runs this on the packages that it has built. It removes the scripts that call ldconfig,
# because a trigger does that. It also marks library packages so that those of several architectures
# can be installed together.
foreach(package ${CPACK_PACKAGE_FILES})
  if(NOT package MATCHES "/lib[^/]*$")
    continue()
  endif()
  set(content ${CPACK_TEMPORARY_DIRECTORY}/content)
  file(REMOVE_RECURSE ${content})
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${content} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${content}/DEBIAN/postinst ${content}/DEBIAN/postrm)
  file(READ ${content}/DEBIAN/control control)
  string(STRIP "${control}" control)
  file(WRITE ${content}/DEBIAN/control "${control}\nMulti-Arch: same\n")
  execute_process(COMMAND dpkg-deb --root-owner-group --build ${content} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
