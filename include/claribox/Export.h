// Marks what libclaribox.so shows to its hosts; everything else in the library is hidden.
#pragma once

#if defined(_WIN32)
#define CLARIBOX_API
#else
#define CLARIBOX_API __attribute__((visibility("default")))
#endif
