# Runs a host on a new configuration folder.
file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER})
execute_process(COMMAND ${HOST} ${FOLDER} RESULT_VARIABLE status)
file(REMOVE_RECURSE ${FOLDER})
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the host ended with ${status}")
endif()
