# Each public header compiles alone, as C11 and as C++17; all of them in either order do too; and the
# export table is exactly the list; and no room calls another but as docs/architecture.md has it.
file(GLOB public_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/wexelxi/*.h)
set(all_headers "")
set(all_reversed "")
set(header_sources "")
foreach(header IN LISTS public_headers)
  get_filename_component(base ${header} NAME_WE)
  file(CONFIGURE OUTPUT headers/${base}.c CONTENT "#include \"wexelxi/${base}.h\"\n#include \"wexelxi/${base}.h\"\nint header_${base};\n")
  file(CONFIGURE OUTPUT headers/${base}.cpp CONTENT "#include \"wexelxi/${base}.h\"\nint header_${base};\n")
  list(APPEND header_sources ${CMAKE_CURRENT_BINARY_DIR}/headers/${base}.c ${CMAKE_CURRENT_BINARY_DIR}/headers/${base}.cpp)
  string(APPEND all_headers "#include \"wexelxi/${base}.h\"\n")
  string(PREPEND all_reversed "#include \"wexelxi/${base}.h\"\n")
endforeach()
file(CONFIGURE OUTPUT headers/all_forward.c CONTENT "${all_headers}int all_forward;\n")
file(CONFIGURE OUTPUT headers/all_reversed.c CONTENT "${all_reversed}int all_reversed;\n")
file(CONFIGURE OUTPUT headers/whole.c CONTENT "#include \"wexelxi.h\"\nint whole;\n")
file(CONFIGURE OUTPUT headers/client_page.cpp CONTENT "#include \"${CMAKE_CURRENT_SOURCE_DIR}/hosts/client_page.c\"\n")
list(APPEND header_sources
  hosts/client_page.c ${CMAKE_CURRENT_BINARY_DIR}/headers/client_page.cpp
  ${CMAKE_CURRENT_BINARY_DIR}/headers/all_forward.c
  ${CMAKE_CURRENT_BINARY_DIR}/headers/all_reversed.c
  ${CMAKE_CURRENT_BINARY_DIR}/headers/whole.c)
if(NOT WEXELXI_TEST_LABEL)
  add_library(header_checks OBJECT ${header_sources})
  target_include_directories(header_checks PRIVATE ${PROJECT_SOURCE_DIR}/include)
  target_compile_options(header_checks PRIVATE -Wall -Wextra -Wpedantic -Werror)
  set_target_properties(header_checks PROPERTIES CXX_STANDARD 17)

  add_test(NAME client_page
    COMMAND ${CMAKE_COMMAND} -DPROJECT=${PROJECT_SOURCE_DIR} -DCC=${CMAKE_C_COMPILER}
            -DCXX=${CMAKE_CXX_COMPILER} -DWORK=${CMAKE_CURRENT_BINARY_DIR}
            -P ${CMAKE_CURRENT_SOURCE_DIR}/client_page.cmake)
  add_test(NAME exports
    COMMAND ${CMAKE_COMMAND} -DLIST=${WEXELXI_EXPORTS} -DLIBRARY=$<TARGET_FILE:hwexelxi>
            -DNM=${CMAKE_NM} -P ${CMAKE_CURRENT_SOURCE_DIR}/exports.cmake)

  find_package(Python3 COMPONENTS Interpreter REQUIRED)
  add_test(NAME room_calls
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/room_calls_test.py ${CMAKE_NM}
            ${PROJECT_SOURCE_DIR}/docs/architecture.md $<TARGET_OBJECTS:wexelxi_objects>
    COMMAND_EXPAND_LISTS)
endif()

# A host without -fPIC, with functions of its own under exported names. The sanitizers' runtimes want
# position independence, so it is built plainly only.
if(NOT WEXELXI_SANITIZE AND NOT WEXELXI_COVERAGE)
  add_executable(override_host hosts/override_host.c)
  target_compile_options(override_host PRIVATE -fno-pic -fno-pie)
  target_link_options(override_host PRIVATE -no-pie)
  target_link_libraries(override_host PRIVATE hwexelxi wexelxi_warnings)
  add_test(NAME override_host
    COMMAND ${CMAKE_COMMAND} "-DHOST=${CMAKE_CROSSCOMPILING_EMULATOR};$<TARGET_FILE:override_host>"
            -DFOLDER=${CMAKE_CURRENT_BINARY_DIR}/override_host_folder
            -P ${CMAKE_CURRENT_SOURCE_DIR}/run_host.cmake)
endif()
