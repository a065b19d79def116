// The order of the passes: from the whole array to groups, to blocks, and depth first within a block, so that all but
// the first few passes work in the caches. For vector sources only.
#pragma once

#include "dft/pow2/columns.h"
#include "dft/pow2/pow2_passes.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// Log2 of the elements of the blocks that are left to the end.
template <typename Way>
inline constexpr int kLastBits = Way::kPoints == 1 ? 2 : 4;

template <typename Way>
using Elements = LaneComplex<typename Way::Vector>*;

inline std::ptrdiff_t Reversed2(std::ptrdiff_t k) {
    return k % 2 * 2 + k / 2;
}

/// Where the spectrum of a whole line stands, and whether in natural order or in that of its blocks, bit-reversed.
template <typename Places>
struct Spectrum {
    Places data;
    bool isNatural;
};

/// The place of the first frequency of the block of 4 elements that is number `block` of its size.
template <typename T, typename Places>
inline std::ptrdiff_t PlaceOf(const Pow2Form<T>& form, Spectrum<Places> spectrum, std::ptrdiff_t block) {
    if (!spectrum.isNatural) {
        return 4 * block;
    }
    const int middleBits = form.log2_length - 4;
    const std::ptrdiff_t middle = block & ((std::ptrdiff_t{1} << middleBits) - 1);
    const std::ptrdiff_t reversed = middleBits == 0 ? 0 : form.lists.reversals[middle];
    return reversed * 4 + Reversed2(block >> middleBits);
}

/// How long before their turn spectra are brought near.
inline constexpr std::ptrdiff_t kBlocksAhead = 4;

/// The blocks of 4 elements within the block of 2^bits elements that is number `block` of its size.
template <Direction direction, typename T, typename V, typename Places>
inline void RunLastBlocks(const Pow2Form<T>& form, LaneComplex<V>* work, Spectrum<Places> spectrum, int bits,
                          std::ptrdiff_t block) {
    const std::ptrdiff_t blocks = std::ptrdiff_t{1} << (bits - 2);
    const std::ptrdiff_t step = std::ptrdiff_t{1} << (form.log2_length - 2);
    const std::ptrdiff_t place1 = spectrum.isNatural ? step : 2;
    const std::ptrdiff_t place2 = spectrum.isNatural ? 2 * step : 1;
    const std::ptrdiff_t place3 = spectrum.isNatural ? 3 * step : 3;
    for (std::ptrdiff_t k = 0; k < blocks; ++k) {
        const std::ptrdiff_t number = block * blocks + k;
        LaneComplex<V>* const at = work + 4 * k;
        const Places four = spectrum.data + PlaceOf(form, spectrum, number);
        const std::ptrdiff_t later = number + kBlocksAhead < step ? number + kBlocksAhead : number;
        const Places coming = spectrum.data + PlaceOf(form, spectrum, later);
        Announce(coming, 0);
        Announce(coming, place1);
        Announce(coming, place2);
        Announce(coming, place3);
        LaneComplex<V> x[4];
        if constexpr (direction == kForward) {
            x[0] = at[0];
            x[1] = at[1];
            x[2] = at[2];
            x[3] = at[3];
        } else {
            x[0] = Fetch(four, 0);
            x[1] = Fetch(four, place1);
            x[2] = Fetch(four, place2);
            x[3] = Fetch(four, place3);
        }
        const auto rotate = [&] {
            const TwiddleTriple<T> triple = TripleOf(form.triples + number * 6);
            x[1] = Rotate<direction>(x[1], triple.w1);
            x[2] = Rotate<direction>(x[2], triple.w2);
            x[3] = Rotate<direction>(x[3], triple.w3);
        };
        if (direction == kForward && form.triples != nullptr) {
            rotate();
        }
        Butterfly4<direction>(x[0], x[1], x[2], x[3]);
        if (direction == kBackward && form.triples != nullptr) {
            rotate();
        }
        if constexpr (direction == kForward) {
            Deposit(four, 0, x[0]);
            Deposit(four, place1, x[1]);
            Deposit(four, place2, x[2]);
            Deposit(four, place3, x[3]);
        } else {
            at[0] = x[0];
            at[1] = x[1];
            at[2] = x[2];
            at[3] = x[3];
        }
    }
}

/// Calls pass(levels, bits, block, offset) for radix-2 passes, by twos where that is possible, that take the block of
/// 2^bits elements down to 2^lastBits, or back up from there. `offset` counts vectors.
template <typename Way, Direction direction, typename Pass>
inline void ForLevels(int bits, int lastBits, std::ptrdiff_t block, Pass pass) {
    const int odd = (bits - lastBits) % 2;
    const auto run = [&](int at) {
        for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{1} << (bits - at); ++k) {
            pass(at == bits && odd != 0 ? 1 : 2, at, (block << (bits - at)) + k, (k << at) / Way::kPoints);
        }
    };
    if constexpr (direction == kForward) {
        for (int at = bits; at > lastBits; at -= at == bits && odd != 0 ? 1 : 2) {
            run(at);
        }
    } else {
        for (int at = lastBits + 2; at <= bits - odd; at += 2) {
            run(at);
        }
        if (odd != 0) {
            run(bits);
        }
    }
}

/// Radix-2 passes from the block of 2^bits elements down to 2^lastBits, or back up. The first pass forward reads
/// `outer`, the last one backward writes it; all others work in `work`.
template <typename Way, Direction direction, typename T, typename Outer>
void RunAllLevels(const Pow2Form<T>& form, Outer outer, Elements<Way> work, int bits, int lastBits,
                  std::ptrdiff_t block) {
    ForLevels<Way, direction>(bits, lastBits, block,
                              [&](int levels, int at, std::ptrdiff_t number, std::ptrdiff_t offset) {
                                  const auto run = [&](auto in, auto out) {
                                      if (levels == 1) {
                                          RunLevels<Way, 1, direction>(form, in, out, at, number);
                                      } else {
                                          RunLevels<Way, 2, direction>(form, in, out, at, number);
                                      }
                                  };
                                  if (at < bits) {
                                      run(work + offset, work + offset);
                                  } else if constexpr (direction == kForward) {
                                      run(outer, work);
                                  } else {
                                      run(work, outer);
                                  }
                              });
}

/// The radix-4 passes of the block of 2^bits elements, an even power, depth first.
template <typename Way, Direction direction, typename T, typename Outer, typename Places>
void RunRadix4Passes(const Pow2Form<T>& form, Outer outer, Elements<Way> work, Spectrum<Places> spectrum, int bits,
                     std::ptrdiff_t block) {
    constexpr bool forward = direction == kForward;
    if constexpr (forward) {
        RunRadix4<Way, direction>(form, outer, work, bits, block, 1);
    }
    if (bits > kCachedLineBits<Way>) {
        for (std::ptrdiff_t k = 0; k < 4; ++k) {
            const Elements<Way> part = work + (k << (bits - 2)) / Way::kPoints;
            RunRadix4Passes<Way, direction>(form, part, part, spectrum, bits - 2, 4 * block + k);
        }
    } else {
        if constexpr (!forward && kLastBits<Way> == 2) {
            RunLastBlocks<direction>(form, work, spectrum, bits, block);
        }
        const int first = forward ? bits - 2 : kLastBits<Way> + 2;
        for (int at = first; at > kLastBits<Way> && at < bits; at += forward ? -2 : 2) {
            RunRadix4<Way, direction>(form, work, work, at, block << (bits - at), std::ptrdiff_t{1} << (bits - at));
        }
        if constexpr (forward && kLastBits<Way> == 2) {
            RunLastBlocks<direction>(form, work, spectrum, bits, block);
        }
    }
    if constexpr (!forward) {
        RunRadix4<Way, direction>(form, work, outer, bits, block, 1);
    }
}

/// All passes of the block of 2^bits elements, 16 or more, that is number `block` of its size, but for the blocks of
/// 2^kLastBits elements where that is not 4. Forward it reads `outer`, works in `work` and leaves the spectrum where
/// `spectrum` says (if those blocks are 4 elements, else in `work`); backward it goes from there to `outer`. `outer`
/// may be the same as either; `work` may be the spectrum's place only where that is in bit-reversed order.
template <typename Way, Direction direction, typename T, typename Outer, typename Places>
void RunPasses(const Pow2Form<T>& form, Outer outer, Elements<Way> work, Spectrum<Places> spectrum, int bits,
               std::ptrdiff_t block) {
    const bool isBlock = bits <= form.blockBits;
    if (isBlock && bits % 2 == 0) {
        RunRadix4Passes<Way, direction>(form, outer, work, spectrum, bits, block);
        return;
    }
    const int lastBits = isBlock ? bits - 1 : bits > form.groupBits ? form.groupBits : form.blockBits;
    if constexpr (direction == kForward) {
        RunAllLevels<Way, direction>(form, outer, work, bits, lastBits, block);
    }
    for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{1} << (bits - lastBits); ++k) {
        const Elements<Way> part = work + (k << lastBits) / Way::kPoints;
        RunPasses<Way, direction>(form, part, part, spectrum, lastBits, (block << (bits - lastBits)) + k);
    }
    if constexpr (direction == kBackward) {
        RunAllLevels<Way, direction>(form, outer, work, bits, lastBits, block);
    }
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
