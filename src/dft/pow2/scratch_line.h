// Room for one more line while a transform runs.
#pragma once

#include "dft/complex.h"
#include "dft/memory/engine_memory.h"

#include <cstddef>
#include <memory>

namespace dft {

/// `length` elements from `engine_alloc` on a multiple of 64 bytes, given back at the end of the scope.
template <typename Real>
class ScratchLine {
public:
    explicit ScratchLine(std::ptrdiff_t length)
        : m_Block(engine_alloc(static_cast<std::size_t>(length) * sizeof(Complex<Real>) + kAlignment)) {}
    ~ScratchLine() {
        if (m_Block != nullptr) {
            engine_free(m_Block);
        }
    }
    ScratchLine(const ScratchLine&) = delete;
    ScratchLine& operator=(const ScratchLine&) = delete;

    /// Null if there was no memory.
    Complex<Real>* data() const {
        void* start = m_Block;
        std::size_t space = 2 * kAlignment;
        return m_Block == nullptr ? nullptr
                                  : static_cast<Complex<Real>*>(std::align(kAlignment, kAlignment, start, space));
    }

private:
    static constexpr std::size_t kAlignment = 64;
    void* m_Block;
};

} // namespace dft
