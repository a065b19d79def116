# Holds the dynamic symbols of LIBRARY against the list in EXPECTED: one line of demangled text a symbol, no more and no
# less. Constructors and destructors come in several copies of one name and count once.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${NM} -D --defined-only --demangle ${LIBRARY}
  OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)

# A line of nm is "address kind name"; names hold commas and blanks but no semicolons.
string(REGEX REPLACE "(^|\n)[0-9a-f]+ [A-Za-z] " "\\1" table "${table}")
string(STRIP "${table}" table)
string(REPLACE "\n" ";" found "${table}")
list(REMOVE_DUPLICATES found)

if(POINTER_BITS EQUAL 64)
  set(size_type "unsigned long")
else()
  set(size_type "unsigned int")
endif()
file(STRINGS ${EXPECTED} expected REGEX "^[^#]")
list(TRANSFORM expected REPLACE "size_t" "${size_type}")

set(missing ${expected})
list(REMOVE_ITEM missing ${found})
set(leaked ${found})
list(REMOVE_ITEM leaked ${expected})
foreach(symbol IN LISTS missing)
  message(SEND_ERROR "not exported: ${symbol}")
endforeach()
foreach(symbol IN LISTS leaked)
  message(SEND_ERROR "exported, and not on the list: ${symbol}")
endforeach()
list(LENGTH found count)
message(STATUS "${count} exported symbols")
