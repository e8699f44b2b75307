# The libraries count what runs of them. Their headers are counted in the tests too, which
# instantiate them. What is always inlined is counted once, not once for each caller.
add_compile_options(--coverage)
add_compile_definitions(always_inline=noinline)
add_link_options(--coverage)
foreach(library VelmorPlatform VelmorTcamCliHelper)
  target_compile_options(${library} PRIVATE --coverage)
  target_compile_definitions(${library} PRIVATE always_inline=noinline)
  target_link_options(${library} PRIVATE --coverage)
  target_sources(${library} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/CoverageAtAbort.cpp)
endforeach()
