# The page of client code compiles silently in both languages, and each trap in it does not. Without
# -Wextra, as clients are: what the header itself asks the compiler for must do.
foreach(language "${CC};-std=c11;-x;c" "${CXX};-std=c++17;-x;c++")
  foreach(trap RANGE 7)
    execute_process(COMMAND ${language} -DTRAP=${trap} -Wall -Wpedantic -S -o /dev/null
                            -I${PROJECT}/include ${PROJECT}/tests/hosts/client_page.c
                    ERROR_VARIABLE messages)
    if((trap EQUAL 0) AND messages)
      message(FATAL_ERROR "${language}: the page does not compile silently\n${messages}")
    elseif((trap GREATER 0) AND NOT messages)
      message(FATAL_ERROR "${language}: trap ${trap} compiles silently")
    endif()
  endforeach()
endforeach()
