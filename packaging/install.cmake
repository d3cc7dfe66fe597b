# What cmake --install and cpack put where: a runtime component and a development component.
include(CMakePackageConfigHelpers)

install(TARGETS hwexelxi EXPORT wexelxi LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
# The tool finds the library beside it, wherever the tree has moved.
set_target_properties(wexelxi-info PROPERTIES
  INSTALL_RPATH "\$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
install(TARGETS wexelxi-info RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(FILES tools/wexelxi-info.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev FILES_MATCHING PATTERN "*.h")
install(EXPORT wexelxi NAMESPACE wexelxi:: FILE wexelxiTargets.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/wexelxi COMPONENT dev)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/wexelxiConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES packaging/wexelxiConfig.cmake ${PROJECT_BINARY_DIR}/wexelxiConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/wexelxi COMPONENT dev)

# The pkg-config file finds its prefix from where it stands, so that the installed tree can move.
file(RELATIVE_PATH WEXELXI_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(packaging/wexelxi.pc.in ${PROJECT_BINARY_DIR}/wexelxi.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/wexelxi.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

file(GLOB wexelxi_pages CONFIGURE_DEPENDS docs/*.md)
install(FILES README.md ${wexelxi_pages} DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)

# The symbols file tells Debian's tools which release brought each name.
file(STRINGS ${WEXELXI_EXPORTS} names REGEX "^[A-Za-z_]")
list(SORT names)
list(TRANSFORM names REPLACE "(.+)" " \\1@Base 1.0.0")
list(JOIN names "\n" names)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/debian/symbols CONTENT "hwexelxi.so libhwexelxi #MINVER#\n${names}\n")
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/debian/triggers CONTENT "activate-noawait ldconfig\n")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME wexelxi)
set(CPACK_PACKAGE_VENDOR "wexelxi")
set(CPACK_PACKAGE_CONTACT "wexelxi developers <developers@wexelxi.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libhwexelxi)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "Win32-shaped services for headless hosts on Linux")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/debian/symbols ${PROJECT_BINARY_DIR}/debian/triggers
    ${PROJECT_SOURCE_DIR}/packaging/debian/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libhwexelxi-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_DESCRIPTION "Win32-shaped services for headless hosts on Linux: development files")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libhwexelxi (= ${PROJECT_VERSION})")
include(CPack)
