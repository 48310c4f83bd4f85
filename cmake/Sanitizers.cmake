# The address and undefined-behaviour sanitizers for everything but tests/faulty.
# Test data lie on any byte on purpose: all code reaches them through types of
# alignment 1, so the alignment check stays on.
if(PSCV_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
