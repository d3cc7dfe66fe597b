# Runs the diagnostic command on a scratch folder: what it tells, that its JSON parses, and that it
# leaves nothing behind.
set(scratch ${WORK}/info-test)
file(REMOVE_RECURSE ${scratch})
file(MAKE_DIRECTORY ${scratch}/empty ${scratch}/full ${scratch}/tmp)
file(WRITE ${scratch}/full/wexelxi.ini
  "[Setup]\r\nVersion=7\r\nTimerRate=5000\r\n\r\n[Ports]\r\nCOM7=/dev/null,rs232\r\nCOM8=/no/such\"device,modem\r\ncom3=/dev/null,rs232\r\nCOM4=/dev/null,rs322\r\nCOM5=/dev/null\r\nFOO=/dev/null,modem\r\nDelay=9\r\n\r\n[Localize]\r\nLocale=xx\r\n")
file(READ ${scratch}/full/wexelxi.ini before)
set(ENV{TMPDIR} ${scratch}/tmp)
set(ENV{CUPS_SERVER} ${scratch}/no-such-socket)
unset(ENV{WEXELXIDIR})
unset(ENV{WEXELLOCALE})

function(info expected_status)
  execute_process(COMMAND ${INFO} ${ARGN} OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE status)
  if(NOT status EQUAL expected_status)
    message(FATAL_ERROR "wexelxi-info ${ARGN}: status ${status} instead of ${expected_status}\n${out}${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
  set(err "${err}" PARENT_SCOPE)
endfunction()

function(expect text)
  foreach(part IN LISTS ARGN)
    string(FIND "${text}" "${part}" at)
    if(at EQUAL -1)
      message(FATAL_ERROR "'${part}' is missing in:\n${text}")
    endif()
  endforeach()
endfunction()

info(0 --help)
expect("${out}" "Usage:" "--json")
info(2 --nonsense)
expect("${err}" "--nonsense")
info(2 nonsense)
expect("${err}" "no section nonsense")
info(2 --folder)

info(0 --folder ${scratch}/empty)
expect("${out}" version configuration settings language timezone ports printers fonts modules locking
  "missing: a first start writes it")
string(ASCII 27 escape)
string(FIND "${out}" "${escape}" at)
if(NOT at EQUAL -1)
  message(FATAL_ERROR "colour without a terminal")
endif()

set(ENV{WEXELXIDIR} ${scratch}/full)
info(0 --json)
foreach(row
    "configuration folderFrom|the variable WEXELXIDIR" "settings values 0 inForce|7"
    "settings values 3 inForce|50" "settings values 3 inFile|5000" "language number|1033"
    "language from|key Locale of section Localize, whose code is unknown" "ports drainSeconds|9"
    "ports ports 0 name|COM7" "ports ports 0 state|opens, no terminal line"
    "ports ports 1 device|/no/such\"device" "ports ports 1 state|No such file or directory"
    "ports ports 2 state|never looked at: ports have capital letters, write COM3"
    "ports ports 5 type|none" "ports ports 6 from|built in" "printers count|0" "modules loaded|0" "locking active|ON")
  string(REPLACE "|" ";" row "${row}")
  list(GET row 0 path)
  list(GET row 1 expected)
  string(REPLACE " " ";" path "${path}")
  string(JSON value ERROR_VARIABLE bad GET "${out}" ${path})
  if(bad OR NOT value STREQUAL expected)
    message(FATAL_ERROR "${path}: '${value}' instead of '${expected}' ${bad}")
  endif()
endforeach()

# What a host would miss, a line each.
info(1 --check)
expect("${out}" "language: \"xx\" of key Locale" "ports: COM8: /no/such\"device: No such file"
  "ports: com3: never looked at" "ports: COM4: an ordinary file name: \"rs322\" is no type"
  "ports: COM5: an ordinary file name: no type" "ports: FOO: no port's name"
  "printers: no scheduler answers at ${scratch}/no-such-socket" "fonts: fontconfig knows no outline font")
string(REGEX MATCHALL "\n" lines "${out}")
list(LENGTH lines count)
if(NOT count EQUAL 8)
  message(FATAL_ERROR "8 findings expected:\n${out}")
endif()
info(0 --check configuration)
info(1 --check --folder ${scratch}/none/below configuration)
expect("${out}" "none/below: does not exist" "mkdir -p")
info(1 --check --folder ${scratch}/full/wexelxi.ini configuration)
expect("${out}" "not a folder")
info(0 --folder ${scratch}/none configuration)
expect("${out}" "fileState: missing\n")

# Of a large file only the first part is looked at, so that 30 MB hold nothing up.
string(REPEAT "[Big]\r\nKey=0123456789012345678901234567890123456789\r\n\r\n" 30000 text)
file(WRITE ${scratch}/empty/wexelxi.ini
  "[Setup]\r\nVersion=4\r\nBellLevel=5\r\n\r\n${text}[Localize]\r\nLocale=de\r\n")
info(0 --folder ${scratch}/empty --json configuration settings language)
string(JSON bell GET "${out}" settings values 1 inForce)
string(JSON from GET "${out}" language from)
expect("${out} bell=${bell} from=${from}." "larger than 1 MiB" "bell=5 " "from=the default.")
file(REMOVE ${scratch}/empty/wexelxi.ini)

if(EXISTS /dev/full)
  execute_process(COMMAND ${INFO} --help OUTPUT_FILE /dev/full ERROR_VARIABLE err RESULT_VARIABLE status)
  expect("${status} ${err}" "1 wexelxi-info: the output cannot be written")
endif()

file(READ ${scratch}/full/wexelxi.ini after)
file(GLOB left ${scratch}/empty/* ${scratch}/tmp/* ${scratch}/full/*)
if(NOT before STREQUAL after OR NOT left STREQUAL "${scratch}/full/wexelxi.ini")
  message(FATAL_ERROR "something was written: ${left}")
endif()
file(REMOVE_RECURSE ${scratch})
