// The x87 state under which the engine computes.
#pragma once

#include <cstdint>

namespace dft {

/// Holds the x87 control word at 64 bits of mantissa, round to nearest, all exceptions masked, and gives the caller's
/// own back at the end. MXCSR stays as it is.
class EngineControlWord {
public:
    EngineControlWord() {
        asm volatile("fnstcw %0" : "=m"(m_Caller));
        Load(0x037F);
    }
    ~EngineControlWord() { Load(m_Caller); }
    EngineControlWord(const EngineControlWord&) = delete;
    EngineControlWord& operator=(const EngineControlWord&) = delete;

private:
    static void Load(std::uint16_t word) { asm volatile("fldcw %0" : : "m"(word)); }

    std::uint16_t m_Caller;
};

} // namespace dft
