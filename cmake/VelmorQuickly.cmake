# Functions that shorten the build.
#
# Every source of a target sees the target's precompiled headers. So a source that lacks an include
# can compile all the same. The preset package uses no precompiled headers: scripts/package finds such a
# source.

# velmor_precompile(TARGET [HEADER...]): precompiles each HEADER, and the headers of the standard
# library that most sources include. <iostream> is not one of them: it makes every source construct
# the streams at load.
function(velmor_precompile target)
  if(VELMOR_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <array> <atomic> <bit> <charconv> <compare> <concepts> <cstddef> <cstdint> <cstdio>
      <cstdlib> <cstring> <functional> <iterator> <limits> <map> <memory> <mutex> <new> <optional>
      <ostream> <span> <string> <string_view> <type_traits> <unordered_map> <utility> <vector>
      ${ARGN})
    velmor_warn_as_precompiled(${target})
  endif()
endfunction()

# velmor_precompile_as(TARGET OTHER): uses the precompiled headers of OTHER, which must be compiled
# with the same options.
function(velmor_precompile_as target other)
  if(VELMOR_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM ${other})
    velmor_warn_as_precompiled(${target})
  endif()
endfunction()

# With std::string in a precompiled header, g++ 12 warns about writes beyond the end that cannot occur.
# Builds without precompiled headers keep these warnings.
function(velmor_warn_as_precompiled target)
  target_compile_options(${target} PRIVATE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds -Wno-stringop-overflow>)
endfunction()

# velmor_compile_quickly(TARGET): compiles without optimisation. For code that is neither shipped nor
# measured. Optimisation would take several times as long, above all for tests.
function(velmor_compile_quickly target)
  # _FORTIFY_SOURCE needs optimisation.
  target_compile_options(${target} PRIVATE -O0 -U_FORTIFY_SOURCE)
endfunction()
