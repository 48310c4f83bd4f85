# Every target of the project takes its flags from here.
# -ffp-contract=off: a fused multiply-add changes one generated value in ten,
# and test data and library results must be the same on every processor.
# -ffp-exception-behavior=maytrap: clang would otherwise divide ahead of the test that
# a divisor is not zero, and raise flags that no source line raises; g++ never does.
add_library(pscv_flags INTERFACE)
target_compile_options(
  pscv_flags
  INTERFACE -ffp-contract=off
            $<$<CXX_COMPILER_ID:Clang>:-ffp-exception-behavior=maytrap>
            -Wall
            -Wextra
            -Wshadow
            -Wconversion
            -Wpedantic
            -Werror
            $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
            $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)
