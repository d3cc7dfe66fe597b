# Turns the list of exported names into a version script: those names, and nothing else.
file(STRINGS ${LIST} lines REGEX "^[A-Za-z_]")
list(JOIN lines ";\n    " names)
file(WRITE ${MAP} "{\n  global:\n    ${names};\n  local:\n    *;\n};\n")
