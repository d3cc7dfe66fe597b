# What the library stands on.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(Cups REQUIRED)
set(WEXELXI_PPD_LIBRARY "" CACHE STRING
    "pkg-config name of the library that has the PPD calls, where libcups no longer has them")
# What print/ppd.h stands on.
add_library(wexelxi_ppd INTERFACE)
target_link_libraries(wexelxi_ppd INTERFACE Cups::Cups)
if(WEXELXI_PPD_LIBRARY)
  pkg_check_modules(PPD REQUIRED IMPORTED_TARGET ${WEXELXI_PPD_LIBRARY})
  target_compile_definitions(wexelxi_ppd INTERFACE WEXELXI_PPD_LIBRARY)
  target_link_libraries(wexelxi_ppd INTERFACE PkgConfig::PPD)
endif()
pkg_check_modules(FONTCONFIG REQUIRED IMPORTED_TARGET fontconfig)
pkg_check_modules(PANGOFT2 REQUIRED IMPORTED_TARGET pangoft2)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE})
endif()
