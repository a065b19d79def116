// The order in which the library's global objects come up at load, each step before any initialiser of a host:
//
//     1  a group of constants
//     2  the kernel table, and with it the census
//     3  a group of constants
//     4  a group of constants, then the wavelet filter sets
//     5  a group of constants
//
// Steps 1 to 3 and 5 stand in KernelTable.cpp. An object takes its place with CLARIBOX_AT_LOAD(step); within a step and
// a source the order is that of the definitions.
#pragma once

#include <cmath>

namespace processor {

/// Required at each of these steps, once in each source that takes one, though nothing reads them: the order of the
/// initialisers is part of what the library promises, and a step without its group would be another one. Their values
/// are pinned by tests/processor/KernelTableTest.cpp; their order rests on the priorities below alone.
struct ConstantGroup {
    ConstantGroup() : twoPi(6.2831855f), squareRootOfTwo(1.4142135f), logOfTwo(static_cast<float>(std::log(2.0))) {}

    float twoPi;
    float squareRootOfTwo;
    float logOfTwo;
};

} // namespace processor

/// The attribute of an object of class type that comes up at `step`, 1 to 5. The compiler's priorities run across all
/// sources of a program, from 101 on; objects without one come last.
#define CLARIBOX_AT_LOAD(step) __attribute__((used, init_priority(100 + (step))))
