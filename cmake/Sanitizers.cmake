# Address and undefined-behaviour sanitizers for the entire tree, so that library and tests match.
option(CVN_SANITIZE "Build with address and undefined-behaviour sanitizers" OFF)
if(CVN_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# Coverage for libFuzzer, which is linked only into the fuzzers.
option(CVN_BUILD_FUZZERS "Build the fuzzers; needs clang" OFF)
if(CVN_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
