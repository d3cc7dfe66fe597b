# Gives the imported target wexelxi::hwexelxi.
include(${CMAKE_CURRENT_LIST_DIR}/wexelxiTargets.cmake)
