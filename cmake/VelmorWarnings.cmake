# The interface target velmor_warnings: the warnings of every target. In this project they are
# errors. In a project that includes this one they are not, because it may use other compilers.
add_library(velmor_warnings INTERFACE)
target_compile_options(velmor_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wcast-qual -Wunused -Wundef
  -Wformat=2 -Wimplicit-fallthrough -Wextra-semi -Wdouble-promotion
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op>
  # g++ 12 reports overlaps in std::string's own assignments that cannot occur (its bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<BOOL:${VELMOR_WARNINGS_AS_ERRORS}>:-Werror>)
if(VELMOR_SANITIZE)
  # The sanitizers add code between the statements. It hides from g++ that a variable is set.
  target_compile_options(velmor_warnings INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
