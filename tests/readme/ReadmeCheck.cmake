# Compares the quoted blocks of README.md and of the documents with their sources: outputs and files.
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

foreach(command "list --where 'name = acl-ipv4-in' examples/leaf1.jsonl"
    "capacity examples/leaf1.jsonl" "lint examples/leaf1.jsonl"
    "explain 'tcp src=10.66.1.2 sport=40000 dst=192.0.2.80 dport=443' examples/leaf1.jsonl")
  execute_process(COMMAND sh -c "\"$0\" ${command}" ${TCAMSHOW} WORKING_DIRECTORY ${SOURCE}
    OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
  expect_block("${command}" "\n$ tcamshow ${command}\n${table}")
endforeach()
execute_process(COMMAND sh -c "\"$0\" ip examples/acl.jsonl | head -n 6" ${TCAMSHOW}
  WORKING_DIRECTORY ${SOURCE} OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
expect_block("the table" "\n$ tcamshow ip examples/acl.jsonl | head -n 6\n${table}")
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
    "--json mac examples/acl.jsonl | head -n 2" "list --where 'name ~ ipv6' examples/acl.jsonl"
    "list --where 'dport overlaps 80-443 and hits > 0' --sort -hits --limit 3 examples/acl.jsonl"
    "list --since examples/questions/yesterday.jsonl --where 'hits > 0' --columns id,action,hits,since examples/questions/today.jsonl"
    "explain 'tcp dst=192.0.2.80 dport=443' examples/acl.jsonl"
    "cost --where 'group = 1' examples/acl.jsonl" "capacity examples/leaf1.jsonl"
    "metrics examples/leaf1.jsonl | grep tcam_total")
  execute_process(COMMAND sh -c "\"$0\" ${command}" ${TCAMSHOW} WORKING_DIRECTORY ${SOURCE}
    OUTPUT_VARIABLE table ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
  expect_block_in(manual "${command}" "\n$ tcamshow ${command}\n${table}")
endforeach()

# The picture of the terminal is drawn from what the program prints.
find_program(PYTHON3 python3)
if(PYTHON3)
  execute_process(COMMAND ${PYTHON3} ${SOURCE}/scripts/picture ${TCAMSHOW} ${BINARY}/terminal.svg
    COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${BINARY}/terminal.svg
    ${SOURCE}/docs/images/terminal.svg RESULT_VARIABLE differs)
  if(differs)
    message(SEND_ERROR "docs/images/terminal.svg is not what scripts/picture draws")
  endif()
endif()

# Every file that a document links to exists.
file(GLOB documents ${SOURCE}/README.md ${SOURCE}/docs/*.md)
foreach(document ${documents})
  file(READ ${document} text)
  get_filename_component(directory ${document} DIRECTORY)
  string(REPLACE "](" "<link>" text "${text}")  # brackets would join the elements of a list
  string(REGEX MATCHALL "<link>[^)#]+" links "${text}")
  foreach(link ${links})
    string(REPLACE "<link>" "" link "${link}")
    if(NOT link MATCHES "^[a-z]+:" AND NOT EXISTS ${directory}/${link})
      message(SEND_ERROR "${document} links to ${link}, which is not there")
    endif()
  endforeach()
endforeach()

# Each line of C++ code in the integration guide is in an example.
file(GLOB examples ${SOURCE}/examples/*/main.cpp)
set(code "")
foreach(example ${examples})
  file(READ ${example} text)
  string(APPEND code "${text}")
endforeach()
file(READ ${SOURCE}/docs/integration.md guide)
string(REGEX REPLACE "[][]" "" code "${code}")
string(REGEX REPLACE "[][]" "" guide "${guide}")
set(count 0)
while(guide MATCHES "\n```cpp\n([^`]+)```(.*)")
  set(guide "${CMAKE_MATCH_2}")
  string(REGEX MATCHALL "[^\n;]+" lines "${CMAKE_MATCH_1}")
  foreach(line ${lines})
    string(STRIP "${line}" line)
    string(FIND "${code}" "${line}" at)
    if(at EQUAL -1)
      message(SEND_ERROR "no example has the guide's\n${line}")
    endif()
    math(EXPR count "${count} + 1")
  endforeach()
endwhile()
if(count EQUAL 0)
  message(SEND_ERROR "the guide shows no code")
endif()
