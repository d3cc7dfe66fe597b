# The Debian packages that cpack makes: the library with its tool, what developers need, and the debug
# symbols. The libraries stand in the folder of the machine's kind, so configure with the preset "package".
file(STRINGS ${WEXELXI_EXPORTS} names REGEX "^[A-Za-z_]")
list(SORT names)
list(TRANSFORM names REPLACE "(.+)" " \\1@Base 1.0.0")
list(JOIN names "\n" names)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/debian/symbols CONTENT "hwexelxi.so libhwexelxi #MINVER#\n${names}\n")
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/debian/triggers CONTENT "activate-noawait ldconfig\n")

compress(packaging/debian/changelog)
set(debug_doc ${CMAKE_INSTALL_DATAROOTDIR}/doc/libhwexelxi-dbgsym)
foreach(part runtime dev debug)
  install(FILES ${PROJECT_BINARY_DIR}/compressed/changelog.gz DESTINATION ${${part}_doc}
          COMPONENT ${part} EXCLUDE_FROM_ALL)
endforeach()
install(FILES LICENSE DESTINATION ${debug_doc} RENAME copyright COMPONENT debug EXCLUDE_FROM_ALL)
install(FILES packaging/debian/libhwexelxi DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides
        COMPONENT runtime EXCLUDE_FROM_ALL)
install(CODE "set(FILES $<TARGET_FILE:hwexelxi> $<TARGET_FILE:wexelxi-info>)
set(READELF ${CMAKE_READELF})
set(OBJCOPY ${CMAKE_OBJCOPY})
include(${PROJECT_SOURCE_DIR}/packaging/debug_symbols.cmake)" COMPONENT debug EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME wexelxi)
set(CPACK_PACKAGE_VENDOR "wexelxi")
set(CPACK_PACKAGE_CONTACT "wexelxi developers <developers@wexelxi.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime dev debug)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(about "A large application written against the Win32 interface runs on it without a
display: files, settings, serial ports, time, threads, languages, printers,
fonts and plug-ins under their Win32 names.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libhwexelxi)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${about}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/debian/symbols ${PROJECT_BINARY_DIR}/debian/triggers
    ${PROJECT_SOURCE_DIR}/packaging/debian/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libhwexelxi-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_DESCRIPTION "${about}\nThis package has the header, the examples and the documentation.")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libhwexelxi (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEBUG_PACKAGE_NAME libhwexelxi-dbgsym)
set(CPACK_DEBIAN_DEBUG_PACKAGE_SECTION debug)
set(CPACK_DEBIAN_DEBUG_DESCRIPTION "${about}\nThis package has the debug symbols.")
set(CPACK_DEBIAN_DEBUG_PACKAGE_DEPENDS "libhwexelxi (= ${PROJECT_VERSION})")
include(CPack)
