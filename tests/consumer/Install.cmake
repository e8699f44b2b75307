# Installs the build tree, moves the installation elsewhere, and runs tcamshow from there.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

file(REMOVE_RECURSE ${WORK} ${INSTALLED})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/first)
file(RENAME ${WORK}/first ${INSTALLED})

run(${INSTALLED}/${BIN}/tcamshow ip ${SOURCE}/examples/acl.jsonl OUTPUT installed)
run(${BUILD}/bin/tcamshow ip ${SOURCE}/examples/acl.jsonl OUTPUT built)
expect_equal("the installed tcamshow" "${installed}" "${built}")
