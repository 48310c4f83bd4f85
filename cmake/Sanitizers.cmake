# -fno-sanitize=vptr and alignment: test data lie on any byte on purpose, and
# the sanitized harness opens shared objects with dlopen.
if(PSCV_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
