# Counts which lines of the libraries run. The libraries' headers are counted in the tests too,
# which instantiate them. An always-inlined function is counted once, instead of once for each
# caller. The counters are atomic, because tests run threads.
add_compile_options(--coverage -fprofile-update=atomic)
add_compile_definitions(always_inline=noinline)
add_link_options(--coverage)
