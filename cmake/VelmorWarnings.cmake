# The warnings of every target, as errors: INTERFACE target velmor_warnings.
add_library(velmor_warnings INTERFACE)
target_compile_options(velmor_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wcast-qual -Wunused -Wundef
  -Wformat=2 -Wimplicit-fallthrough -Wextra-semi -Wdouble-promotion
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op>
  # g++ 12 sees overlaps in std::string's own assignments that cannot be (its bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  -Werror)
if(VELMOR_SANITIZE)
  # What the sanitizers put between the statements hides from g++ that a value is set.
  target_compile_options(velmor_warnings INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
