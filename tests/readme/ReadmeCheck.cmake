# Compares the blocks of README.md and of the documents with what they quote.
file(READ ${SOURCE}/README.md readme)
file(READ ${SOURCE}/docs/tcamshow.md manual)
file(READ ${SOURCE}/docs/formats.md formats)

function(expect_block_in document what text)
  string(FIND "${${document}}" "```${text}```" at)
  if(at EQUAL -1)
    message(SEND_ERROR "the ${document} does not quote ${what}:\n${text}")
  endif()
endfunction()
function(expect_block what text)
  expect_block_in(readme "${what}" "${text}")
endfunction()

execute_process(COMMAND ${TCAMSHOW} ip examples/acl.jsonl WORKING_DIRECTORY ${SOURCE}
  OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
expect_block("the demo" "\n$ tcamshow ip examples/acl.jsonl\n${table}")
file(READ ${SOURCE}/examples/formatter/main.cpp main)
expect_block("the example" "cpp\n${main}")
file(READ ${SOURCE}/examples/formatter/CMakeLists.txt project)
expect_block("the example's project" "cmake\n${project}")

foreach(command "ip examples/acl.jsonl | head -n 4" "ip6 examples/acl.jsonl | head -n 6"
    "mac examples/acl.jsonl" "usage --detail examples/acl.jsonl | head -n 4")
  execute_process(COMMAND sh -c "\"$0\" ${command}" ${TCAMSHOW} WORKING_DIRECTORY ${SOURCE}
    OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
  expect_block_in(formats "${command}" "\n$ tcamshow ${command}\n${table}")
endforeach()
foreach(command "ip6 examples/acl.jsonl | head -n 6" "mac examples/acl.jsonl"
    "--json mac examples/acl.jsonl | head -n 2")
  execute_process(COMMAND sh -c "\"$0\" ${command}" ${TCAMSHOW} WORKING_DIRECTORY ${SOURCE}
    OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
  expect_block_in(manual "${command}" "\n$ tcamshow ${command}\n${table}")
endforeach()

# What a document links to is there.
file(GLOB documents ${SOURCE}/README.md ${SOURCE}/docs/*.md)
foreach(document ${documents})
  file(READ ${document} text)
  get_filename_component(directory ${document} DIRECTORY)
  string(REPLACE "](" "<link>" text "${text}")  # brackets would join the elements of a list
  string(REGEX MATCHALL "<link>[^)#:]+" links "${text}")
  foreach(link ${links})
    string(REPLACE "<link>" "" link "${link}")
    if(NOT EXISTS ${directory}/${link})
      message(SEND_ERROR "${document} links to ${link}, which is not there")
    endif()
  endforeach()
endforeach()
