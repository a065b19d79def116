// The only text the library ever prints.
#include "WaveletTransform.h"

#include <cstdarg>
#include <cstdio>

namespace {

void Print(const char* prefix, const char* format, std::va_list arguments) {
    std::printf("%s", prefix);
    std::vprintf(format, arguments);
    std::printf("\n");
}

} // namespace

void ReportWarning(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    Print("Warning: ", format, arguments);
    va_end(arguments);
}

void ReportError(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    Print("Error: ", format, arguments);
    va_end(arguments);
}
