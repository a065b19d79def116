#include "dft/plans/factors.h"

namespace dft {
namespace {

/// Divides the odd primes but the last out of `rest`. False if one would be above the limit.
bool RecordOddPrimes(int& rest, FactorList& factors) {
    int prime = 3;
    while (static_cast<long long>(prime) * prime <= rest) {
        if (rest % prime == 0) {
            factors.radix[factors.count++] = prime;
            rest /= prime;
        } else if ((prime += 2) > kLargestFactor) {
            return false;
        }
    }
    return true;
}

} // namespace

bool Factorise(int length, FactorList& factors) {
    int rest = length;
    factors.count = 0;
    for (; rest % 4 == 0; rest /= 4) {
        factors.radix[factors.count++] = 4;
    }
    if (rest % 2 == 0) {
        rest /= 2;
        factors.radix[factors.count++] = 4; // the two goes in front of the fours
        factors.radix[0] = 2;
    }
    if (!RecordOddPrimes(rest, factors)) {
        return false;
    }
    factors.last = rest;
    return factors.count > 0 && rest > 1 && rest <= kLargestFactor;
}

} // namespace dft
