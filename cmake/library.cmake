# The shared object, and an archive of the same objects for tests that look inside.
add_library(wexelxi_objects OBJECT)
target_include_directories(wexelxi_objects
  PUBLIC ${PROJECT_SOURCE_DIR}/include
  PRIVATE ${PROJECT_SOURCE_DIR})
set_target_properties(wexelxi_objects PROPERTIES
  POSITION_INDEPENDENT_CODE ON
  CXX_VISIBILITY_PRESET hidden
  C_VISIBILITY_PRESET hidden
  VISIBILITY_INLINES_HIDDEN ON)
# A host's callback or a cancelled thread may unwind through the library.
target_compile_options(wexelxi_objects PRIVATE
  -fno-semantic-interposition -fno-plt -fexceptions -fasynchronous-unwind-tables)
target_link_libraries(wexelxi_objects
  PRIVATE wexelxi_warnings
  PUBLIC Threads::Threads wexelxi_ppd PkgConfig::FONTCONFIG PkgConfig::PANGOFT2 ${CMAKE_DL_LIBS})

foreach(room core profile files comm time threads locale print fonts modules)
  add_subdirectory(${room})
endforeach()

set(WEXELXI_EXPORTS ${PROJECT_SOURCE_DIR}/cmake/exports.list)
set(WEXELXI_VERSION_SCRIPT ${PROJECT_BINARY_DIR}/exports.map)
add_custom_command(
  OUTPUT ${WEXELXI_VERSION_SCRIPT}
  COMMAND ${CMAKE_COMMAND} -DLIST=${WEXELXI_EXPORTS} -DMAP=${WEXELXI_VERSION_SCRIPT}
          -P ${PROJECT_SOURCE_DIR}/cmake/version_script.cmake
  DEPENDS ${WEXELXI_EXPORTS} ${PROJECT_SOURCE_DIR}/cmake/version_script.cmake
  COMMENT "Writing the linker's version script" VERBATIM)
add_custom_target(wexelxi_version_script DEPENDS ${WEXELXI_VERSION_SCRIPT})

add_library(hwexelxi SHARED)
add_library(wexelxi::hwexelxi ALIAS hwexelxi)
add_dependencies(hwexelxi wexelxi_version_script)
set_target_properties(hwexelxi PROPERTIES
  PREFIX ""
  LINKER_LANGUAGE CXX
  LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}
  LINK_DEPENDS ${WEXELXI_VERSION_SCRIPT})
target_include_directories(hwexelxi INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_libraries(hwexelxi PRIVATE wexelxi_objects)
# Functions bind inside, so that a host's own `itoa` changes nothing here; data does not, so that
# a host's executable may hold the copy that everyone uses.
target_link_options(hwexelxi PRIVATE
  -Wl,--version-script=${WEXELXI_VERSION_SCRIPT}
  -Wl,-Bsymbolic-functions -Wl,--as-needed -Wl,-z,relro,-z,now)
if(NOT WEXELXI_SANITIZE)
  target_link_options(hwexelxi PRIVATE -Wl,-z,defs)
endif()

add_library(wexelxi_internal STATIC EXCLUDE_FROM_ALL)
set_target_properties(wexelxi_internal PROPERTIES LINKER_LANGUAGE CXX)
target_link_libraries(wexelxi_internal PUBLIC wexelxi_objects)
target_include_directories(wexelxi_internal INTERFACE ${PROJECT_SOURCE_DIR})
