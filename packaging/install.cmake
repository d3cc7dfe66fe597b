# What cmake --install puts where: a runtime component and a development component.
include(CMakePackageConfigHelpers)
set(runtime_doc ${CMAKE_INSTALL_DATAROOTDIR}/doc/libhwexelxi)
set(dev_doc ${CMAKE_INSTALL_DATAROOTDIR}/doc/libhwexelxi-dev)

# Makes compressed/NAME.gz in the build.
function(compress file)
  get_filename_component(name ${file} NAME)
  set(copy ${PROJECT_BINARY_DIR}/compressed/${name})
  add_custom_command(OUTPUT ${copy}.gz DEPENDS ${PROJECT_SOURCE_DIR}/${file}
    COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/${file} ${copy}
    COMMAND gzip -9nf ${copy} VERBATIM)
  add_custom_target(compressed_${name} ALL DEPENDS ${copy}.gz)
endfunction()

install(TARGETS hwexelxi EXPORT wexelxi LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
install(TARGETS wexelxi-info RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
compress(tools/wexelxi-info.1)
install(FILES ${PROJECT_BINARY_DIR}/compressed/wexelxi-info.1.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
install(FILES LICENSE DESTINATION ${runtime_doc} RENAME copyright COMPONENT runtime)

# The loader's cache takes files named lib* only, and lists them by their soname. The link is that,
# and has -lhwexelxi work.
set(link ${PROJECT_BINARY_DIR}/libhwexelxi.so)
file(CREATE_LINK hwexelxi.so ${link} SYMBOLIC)
install(FILES ${link} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
install(TARGETS wexelxi-trace RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT dev)
install(TARGETS wexelxi-trace-companion LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/wexelxi COMPONENT dev)
compress(tools/wexelxi-trace.1)
install(FILES ${PROJECT_BINARY_DIR}/compressed/wexelxi-trace.1.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT dev)
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev FILES_MATCHING PATTERN "*.h")
install(EXPORT wexelxi NAMESPACE wexelxi:: FILE wexelxiTargets.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/wexelxi COMPONENT dev)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/wexelxiConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES packaging/wexelxiConfig.cmake ${PROJECT_BINARY_DIR}/wexelxiConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/wexelxi COMPONENT dev)

# The pkg-config file finds its prefix from where it stands, so that the installed tree can move.
# Only under /usr does the loader look by itself.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(WEXELXI_PC_RPATH " -Wl,-rpath,\${libdir}")
  set_target_properties(wexelxi-info PROPERTIES INSTALL_RPATH "\$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()
file(RELATIVE_PATH WEXELXI_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(packaging/wexelxi.pc.in ${PROJECT_BINARY_DIR}/wexelxi.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/wexelxi.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

# The pages keep their places, so that their links lead somewhere. The reference is there once
# scripts/check-docs has made it.
install(FILES LICENSE DESTINATION ${dev_doc} RENAME copyright COMPONENT dev)
install(FILES README.md CONTRIBUTING.md DESTINATION ${dev_doc} COMPONENT dev)
install(DIRECTORY docs examples DESTINATION ${dev_doc} COMPONENT dev PATTERN Doxyfile EXCLUDE)
install(DIRECTORY build/reference/html DESTINATION ${dev_doc} COMPONENT dev OPTIONAL)

# As root the loader hears of it at once; an install for a package (DESTDIR) leaves that to the package.
install(CODE "if(\"\$ENV{DESTDIR}\" STREQUAL \"\")
  execute_process(COMMAND ldconfig OUTPUT_QUIET ERROR_QUIET)
endif()" COMPONENT runtime)
add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -DBUILD=${PROJECT_BINARY_DIR}
  -P ${PROJECT_SOURCE_DIR}/packaging/uninstall.cmake VERBATIM)
