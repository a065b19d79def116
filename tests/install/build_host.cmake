# Builds the host in SOURCE against the tree installed at PREFIX, by its CMake package or by its pkg-config file, and runs
# it. The host holds the README's example too, so that what the README shows compiles and runs as it stands there.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${BINARY})
file(MAKE_DIRECTORY ${BINARY})

file(READ ${README} readme)
if(NOT readme MATCHES "\n```cpp\n([^`]*)\n```\n")
  message(FATAL_ERROR "no C++ example in ${README}")
endif()
file(WRITE ${BINARY}/readme/readme_example.h "${CMAKE_MATCH_1}\n")

if(WAY STREQUAL cmake_package)
  execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${BINARY} -G ${GENERATOR}
    -D CMAKE_PREFIX_PATH=${PREFIX} -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_CXX_FLAGS=${FLAGS}
    COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${CMAKE_COMMAND} --build ${BINARY} COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${BINARY}/host COMMAND_ERROR_IS_FATAL ANY)
else()
  set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
  execute_process(COMMAND pkg-config --cflags --libs claribox
    OUTPUT_VARIABLE arguments OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(arguments UNIX_COMMAND "${arguments}")
  separate_arguments(flags UNIX_COMMAND "${FLAGS}")
  # An older language is refused in one sentence, whichever header comes first.
  foreach(header CImageDenoiser CImageFocus ChFunctions ChMatrix DFT_Buffer KernelTable)
    file(WRITE ${BINARY}/old.cpp "#include <claribox/${header}.h>\n")
    execute_process(COMMAND ${COMPILER} -std=c++17 -fsyntax-only ${BINARY}/old.cpp ${arguments}
      RESULT_VARIABLE status ERROR_VARIABLE errors)
    string(REGEX MATCHALL "error:[^\n]*" errors "${errors}")
    list(LENGTH errors count)
    if(status EQUAL 0 OR NOT errors MATCHES "^error:[^;]*Claribox needs C\\+\\+20" OR count GREATER 2)
      message(FATAL_ERROR "${header}.h below C++20: ${errors}")
    endif()
  endforeach()
  execute_process(COMMAND ${COMPILER} -std=c++20 ${flags} ${SOURCE}/host.cpp -I${BINARY}/readme -o ${BINARY}/host ${arguments}
    COMMAND_ERROR_IS_FATAL ANY)
  set(ENV{LD_LIBRARY_PATH} ${PREFIX}/${LIBDIR})
  execute_process(COMMAND ${BINARY}/host COMMAND_ERROR_IS_FATAL ANY)
endif()
