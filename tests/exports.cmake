# Holds the library's dynamic symbols against the list, both ways.
file(STRINGS ${LIST} expected REGEX "^[A-Za-z_]")
execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY}
                OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE " [^\n]*\n" ";" found "${table}")
set(missing ${expected})
list(REMOVE_ITEM missing ${found})
set(extra ${found})
list(REMOVE_ITEM extra ${expected})
if(missing OR extra)
  message(FATAL_ERROR "listed but not exported: ${missing}; exported but not listed: ${extra}")
endif()
