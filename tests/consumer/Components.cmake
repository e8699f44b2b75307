# Installs the components one by one, stripped. Each holds its own files, and together they are a
# full installation.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

function(list_files directory variable)
  file(GLOB_RECURSE files RELATIVE ${directory} ${directory}/*)
  list(SORT files)
  set(${variable} ${files} PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK})
set(all "")
foreach(component runtime dev tool)
  run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/${component} --component ${component}
    --strip)
  list_files(${WORK}/${component} ${component})
  list(APPEND all ${${component}})
endforeach()
list(SORT all)
list_files(${INSTALLED} installed)
expect_equal("the components together" "${all}" "${installed}")

expect_equal("runtime" "${runtime}"
  "${LIB}/libVelmorPlatform.so.${SOVERSION};${LIB}/libVelmorPlatform.so.${VERSION};${LIB}/libVelmorTcamCliHelper.so.${SOVERSION};${LIB}/libVelmorTcamCliHelper.so.${VERSION}")
foreach(library VelmorPlatform VelmorTcamCliHelper)
  run(${READELF} -SW ${WORK}/runtime/${LIB}/lib${library}.so.${VERSION} OUTPUT sections)
  if(sections MATCHES "\\.debug_info|\\.symtab")
    message(SEND_ERROR "${library} is not stripped:\n${sections}")
  endif()
endforeach()
expect_equal("tool" "${tool}"
  "${BIN}/tcamshow;share/bash-completion/completions/tcamshow;share/doc/tcamshow/examples/acl.jsonl;share/doc/tcamshow/examples/fleet/collect;share/doc/tcamshow/examples/fleet/dashboard.promql;share/doc/tcamshow/examples/fleet/fleet.sql;share/doc/tcamshow/examples/fleet/load-duckdb.sql;share/doc/tcamshow/examples/fleet/load-sqlite.sql;share/doc/tcamshow/examples/fleet/tcam.rules.yml;share/doc/tcamshow/examples/fleet/tcamshow-metrics;share/doc/tcamshow/examples/fleet/tcamshow-metrics.service;share/doc/tcamshow/examples/fleet/tcamshow-metrics.timer;share/doc/tcamshow/examples/leaf1.jsonl;share/doc/tcamshow/examples/questions/today.jsonl;share/doc/tcamshow/examples/questions/yesterday.jsonl;share/doc/tcamshow/examples/snapshot/from-csv.py;share/doc/tcamshow/examples/snapshot/from-json.jq;share/doc/tcamshow/examples/snapshot/rules.csv;share/doc/tcamshow/examples/snapshot/rules.json;share/doc/tcamshow/examples/sources/dump/ASIC_DB.json;share/doc/tcamshow/examples/sources/dump/CONFIG_DB.json;share/doc/tcamshow/examples/sources/dump/COUNTERS_DB.json;share/doc/tcamshow/examples/sources/dump/STATE_DB.json;share/doc/tcamshow/examples/sources/flows.txt;share/doc/tcamshow/fleet.md;share/doc/tcamshow/questions.md;share/doc/tcamshow/sources.md;share/doc/tcamshow/tcamshow.md;share/man/man1/tcamshow.1;share/zsh/site-functions/_tcamshow")
foreach(file ${LIB}/libVelmorPlatform.so ${LIB}/libVelmorTcamCliHelper.so
    ${LIB}/pkgconfig/velmor-platform.pc ${LIB}/pkgconfig/velmor-tcam-cli-helper.pc
    ${LIB}/cmake/VelmorTcamCliHelper/VelmorTcamCliHelperConfig.cmake
    include/velmor/Zel.h include/velmor/VelmorTcamManagerBase/VelmorTcamCliTypes.h)
  if(NOT file IN_LIST dev)
    message(SEND_ERROR "dev lacks ${file}")
  endif()
endforeach()
