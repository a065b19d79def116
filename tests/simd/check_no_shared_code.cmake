# A vector source is compiled with instructions that the machine may not have. An inline function that such an object
# leaves as a weak symbol may be the one copy the linker keeps for the whole library, and would then run everywhere: an
# object of a vector class may hold none but those of the class's own namespace.
cmake_minimum_required(VERSION 3.25)
string(REPLACE "|" ";" objects "${OBJECTS}")
foreach(object IN LISTS objects)
  execute_process(COMMAND ${NM} --defined-only --demangle ${object} OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[0-9a-f]+ W [^\n]*" weak "${table}")
  string(REGEX REPLACE ".*claribox_vector_([A-Za-z0-9]+)\\.dir.*" "\\1" class "${object}")
  list(FILTER weak EXCLUDE REGEX "(^|[^A-Za-z0-9_])${class}::")
  foreach(symbol IN LISTS weak)
    message(SEND_ERROR "${object}: ${symbol}")
  endforeach()
endforeach()
list(LENGTH objects count)
if(count EQUAL 0)
  message(FATAL_ERROR "no objects given")
endif()
message(STATUS "${count} objects")
