# The page of client code compiles silently in both languages, and with each of these mistakes behind it
# it does not. Without -Wextra, as clients are: what the header itself asks the compiler for must do.
set(page ${WORK}/client_page_mistake.c)
foreach(mistake
    ""
    "CreateFileA(\"lost\", 0, 0, NULL, OPEN_EXISTING, 0, NULL)"
    "handle = GetModuleHandle(NULL)"
    "*number = flag == -1"
    "*number = (int)timeouts->ReadIntervalTimeout"
    "*number = (int)sizeof(SECURITY_ATTRIBUTES)"
    "GetFileSizeEx(handle, number)"
    "*number = (int)FILE_FLAG_DELETE_ON_CLOSE")
  file(WRITE ${page} "#include \"${PROJECT}/tests/hosts/client_page.c\"
void Mistake(HANDLE handle, BOOL flag, COMMTIMEOUTS *timeouts, int *number) { ${mistake}; }\n")
  foreach(language "${CC};-std=c11;-x;c" "${CXX};-std=c++17;-x;c++")
    execute_process(COMMAND ${language} -Wall -Wpedantic -S -o /dev/null -I${PROJECT}/include ${page}
                    ERROR_VARIABLE messages)
    if((mistake STREQUAL "") AND messages)
      message(FATAL_ERROR "${language}: the page does not compile silently\n${messages}")
    elseif(mistake AND NOT messages)
      message(FATAL_ERROR "${language}: '${mistake}' compiles silently")
    endif()
  endforeach()
endforeach()
file(REMOVE ${page})
