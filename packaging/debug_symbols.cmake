# Puts the debug symbols of each of FILES where debuggers look them up by the file's build id.
foreach(file IN LISTS FILES)
  execute_process(COMMAND ${READELF} -n ${file} OUTPUT_VARIABLE notes COMMAND_ERROR_IS_FATAL ANY)
  if(NOT notes MATCHES "Build ID: (..)([0-9a-f]+)")
    message(FATAL_ERROR "${file} has no build id")
  endif()
  set(folder $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/lib/debug/.build-id/${CMAKE_MATCH_1})
  set(name ${CMAKE_MATCH_2}.debug)
  file(MAKE_DIRECTORY ${folder})
  execute_process(COMMAND ${OBJCOPY} --only-keep-debug --compress-debug-sections ${file} ${folder}/${name}
                  COMMAND_ERROR_IS_FATAL ANY)
  file(CHMOD ${folder}/${name} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endforeach()
