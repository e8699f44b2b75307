# The libraries count what runs of them. Their headers are counted in the tests too, which
# instantiate them. What is always inlined is counted once, not once for each caller.
# Atomic: tests run threads.
add_compile_options(--coverage -fprofile-update=atomic)
add_compile_definitions(always_inline=noinline)
add_link_options(--coverage)
foreach(library VelmorPlatform VelmorTcamCliHelper)
  target_compile_options(${library} PRIVATE --coverage -fprofile-update=atomic)
  target_compile_definitions(${library} PRIVATE always_inline=noinline)
  target_link_options(${library} PRIVATE --coverage)
  target_sources(${library} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/CoverageAtAbort.cpp)
endforeach()
