# The tracer's table of calls is what its generator makes of the headers today.
find_program(PYTHON python3)
execute_process(COMMAND ${PYTHON} -c "import pycparser" RESULT_VARIABLE missing ERROR_QUIET)
if(missing)
  message("pycparser is not there")
  return()
endif()
execute_process(COMMAND ${PYTHON} ${PROJECT}/tools/trace/make_calls.py ${PROJECT}
                OUTPUT_VARIABLE made COMMAND_ERROR_IS_FATAL ANY)
file(READ ${PROJECT}/tools/trace/calls.def kept)
if(NOT made STREQUAL kept)
  message(FATAL_ERROR "the headers have changed: run tools/trace/make_calls.py . >tools/trace/calls.def")
endif()
