// A known floating-point mode for a stretch of code that a host may have reached in any mode.
#pragma once

#include <cfenv>

namespace kernels {

/// While it lives the thread has the default floating-point mode: all exceptions masked, round to nearest and, on x86,
/// extended precision in the x87 unit (control word 0x037F) with the default MXCSR. The destructor brings the caller's
/// mode and exception flags back.
class DefaultFloatingMode {
public:
    DefaultFloatingMode() {
        std::fegetenv(&m_Caller);
        std::fesetenv(FE_DFL_ENV);
    }
    ~DefaultFloatingMode() { std::fesetenv(&m_Caller); }
    DefaultFloatingMode(const DefaultFloatingMode&) = delete;
    DefaultFloatingMode& operator=(const DefaultFloatingMode&) = delete;

private:
    std::fenv_t m_Caller;
};

} // namespace kernels
