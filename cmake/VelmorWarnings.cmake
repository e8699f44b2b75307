# The warnings of every target: INTERFACE target velmor_warnings. They are errors here, but not in a
# project that this one is a part of, which may have other compilers.
add_library(velmor_warnings INTERFACE)
target_compile_options(velmor_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wcast-qual -Wunused -Wundef
  -Wformat=2 -Wimplicit-fallthrough -Wextra-semi -Wdouble-promotion
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op>
  # g++ 12 sees overlaps in std::string's own assignments that cannot be (its bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<BOOL:${VELMOR_WARNINGS_AS_ERRORS}>:-Werror>)
if(VELMOR_SANITIZE)
  # What the sanitizers put between the statements hides from g++ that a value is set.
  target_compile_options(velmor_warnings INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
