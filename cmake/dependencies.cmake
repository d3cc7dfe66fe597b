# What the library stands on.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(Cups REQUIRED)
pkg_check_modules(FONTCONFIG REQUIRED IMPORTED_TARGET fontconfig)
pkg_check_modules(PANGOFT2 REQUIRED IMPORTED_TARGET pangoft2)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE})
endif()
