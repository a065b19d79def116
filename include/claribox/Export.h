// What every header of the library begins with: the language it needs, and the mark of what libclaribox.so shows to its
// hosts; everything else in the library is hidden.
#pragma once

#if __cplusplus <= 201703L // g++ 10 calls its C++20 201709
#error "Claribox needs C++20: compile with -std=c++20 or later"
#include "none-below-C++20" // missing on purpose: no other errors follow the one above
#endif

#define CLARIBOX_API __attribute__((visibility("default")))
