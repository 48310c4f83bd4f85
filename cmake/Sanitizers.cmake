# The address and undefined-behaviour sanitizers for everything but tests/faulty.
# Test data lie on any byte on purpose: all code reaches them through types of
# alignment 1, so the alignment check stays on. The function check of clang would
# give each level of the library weak type descriptions, which levels never share.
if(PSCV_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>)
  add_link_options(-fsanitize=address,undefined)
endif()

# For folders whose code runs long in the tests; all else builds faster than it would gain.
macro(pscv_optimize_sanitized)
  if(PSCV_SANITIZE)
    add_compile_options(-O1)
  endif()
endmacro()
