# What makes a build take less time.
#
# A header that is precompiled is there for every source of its target, so that a source which does
# not include it compiles all the same. The presets lint and package compile without, as clang-tidy
# and scripts/package therefore do, and find such a source.

# velmor_precompile(TARGET [HEADER...]): precompiles the headers of the standard library that most
# sources include, and those given. Without <iostream>, which constructs its streams in every source
# that includes it.
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

# velmor_precompile_as(TARGET OTHER): takes the precompiled headers of a target that is compiled with
# the same options.
function(velmor_precompile_as target other)
  if(VELMOR_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM ${other})
    velmor_warn_as_precompiled(${target})
  endif()
endfunction()

# Once std::string's own functions come from a precompiled header, g++ 12 sees writes beyond their end
# that cannot be. The builds without one look for true ones.
function(velmor_warn_as_precompiled target)
  target_compile_options(${target} PRIVATE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds -Wno-stringop-overflow>)
endfunction()

# velmor_compile_quickly(TARGET): without optimisation, for code that is neither shipped nor measured.
# The compiler would take several times as long over it, and over tests most of all.
function(velmor_compile_quickly target)
  # Fortified calls are there in optimised code alone.
  target_compile_options(${target} PRIVATE -O0 -U_FORTIFY_SOURCE)
endfunction()
