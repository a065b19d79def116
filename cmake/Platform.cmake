# Refuses what the library cannot be built for with one sentence instead of the first error of the compiler.
include(CheckCXXSourceCompiles)

if(NOT CMAKE_SYSTEM_NAME STREQUAL Linux)
  message(FATAL_ERROR "Claribox builds for Linux alone, not for ${CMAKE_SYSTEM_NAME}")
endif()
# The compiler is asked, since flags such as -m32 change what CMAKE_SYSTEM_PROCESSOR names.
check_cxx_source_compiles("
#if !defined(__x86_64__) && !defined(__i386__)
#error
#endif
int main() {}" CLARIBOX_ON_X86)
if(NOT CLARIBOX_ON_X86)
  message(FATAL_ERROR "Claribox builds for x86 processors alone, 64-bit or 32-bit, not for ${CMAKE_SYSTEM_PROCESSOR}")
endif()
