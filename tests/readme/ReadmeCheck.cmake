# Compares the blocks of README.md with what they quote.
file(READ ${SOURCE}/README.md readme)

function(expect_block what text)
  string(FIND "${readme}" "```${text}```" at)
  if(at EQUAL -1)
    message(SEND_ERROR "README.md does not quote ${what}:\n${text}")
  endif()
endfunction()

execute_process(COMMAND ${TCAMSHOW} ip examples/acl.jsonl WORKING_DIRECTORY ${SOURCE}
  OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
expect_block("the demo" "\n$ tcamshow ip examples/acl.jsonl\n${table}")
file(READ ${SOURCE}/examples/formatter/main.cpp main)
expect_block("the example" "cpp\n${main}")
file(READ ${SOURCE}/examples/formatter/CMakeLists.txt project)
expect_block("the example's project" "cmake\n${project}")
