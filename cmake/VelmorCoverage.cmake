# The libraries count what runs of them. Their headers are counted in the tests too, which
# instantiate them. What is always inlined is counted once, not once for each caller.
# Atomic: tests run threads.
add_compile_options(--coverage -fprofile-update=atomic)
add_compile_definitions(always_inline=noinline)
add_link_options(--coverage)
