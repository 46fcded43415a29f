# How every target of ours is compiled: target zerith_flags.
#
# Results must not depend on the compiler's freedom: no fast-math, no contraction of a*b+c into one
# rounding, no instruction set beyond the platform's baseline.
add_library(zerith_flags INTERFACE)
target_compile_features(zerith_flags INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)

set(zerith_warnings -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
target_compile_options(zerith_flags INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-ffp-contract=off ${zerith_warnings}>)
if(ZERITH_WERROR)
  target_compile_options(zerith_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Werror>)
endif()

if(ZERITH_SANITIZE)
  target_compile_options(zerith_flags INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-fsanitize=${ZERITH_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all>)
  target_link_options(zerith_flags INTERFACE -fsanitize=${ZERITH_SANITIZE})
endif()

if(ZERITH_FUZZ)
  target_compile_options(zerith_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
