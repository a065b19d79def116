// How a length is split into the radices of the mixed-radix method.
#pragma once

#include "dft/plans/dft_plan.h"

namespace dft {

/// 2 if any, fours, odd primes ascending; the largest prime stands apart.
struct FactorList {
    int radix[kMaximumStages];
    int count; ///< of recorded radices
    int last;  ///< the last factor
};

/// Factorises `length`, at least 1. False if it is prime or a power of two, or if a prime factor is above 150.
bool Factorise(int length, FactorList& factors);

} // namespace dft
