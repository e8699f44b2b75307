# Hardens every target of an optimised build. The sanitizers check the same calls and buffers, and
# see more without it.
if(NOT VELMOR_SANITIZE)
  add_compile_options(-fstack-protector-strong
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
endif()
add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
