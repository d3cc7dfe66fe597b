# Flags for everything built here, as two interface targets: warnings, and instrumentation.
add_library(wexelxi_warnings INTERFACE)
target_compile_options(wexelxi_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>
  $<$<BOOL:${WEXELXI_WERROR}>:-Werror>)

if(WEXELXI_SANITIZE)
  add_compile_options(-fsanitize=${WEXELXI_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${WEXELXI_SANITIZE})
  add_compile_options(-O1 -g1) # a report needs the lines, and the variables cost a third of the build
endif()
if(WEXELXI_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(WEXELXI_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()
