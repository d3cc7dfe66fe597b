# Gives the imported target wexelxi::hwexelxi.
include(${CMAKE_CURRENT_LIST_DIR}/wexelxiTargets.cmake)

# A program that links the library finds it once it is installed itself, too.
if(NOT DEFINED CMAKE_INSTALL_RPATH_USE_LINK_PATH)
  set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON)
endif()
