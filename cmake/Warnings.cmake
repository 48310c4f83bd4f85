# Every target of the project takes its flags from here.
# -ffp-contract=off: a fused multiply-add changes one generated value in ten,
# and test data and library results must be the same on every processor.
add_library(pscv_flags INTERFACE)
target_compile_options(
  pscv_flags
  INTERFACE -ffp-contract=off
            -Wall
            -Wextra
            -Wshadow
            -Wconversion
            -Wpedantic
            -Werror
            $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
            $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)
