// Makes either form of an operation run that chooses by the processor census.
#pragma once

#include "processor/ProcessorCensus.h"

#include <cstdint>
#include <tuple>

#if defined(__linux__)
#include <pthread.h>
#endif

/// Puts chosen counts in the census for the length of a scope.
class ForcedCensus {
public:
    ForcedCensus(int packages, int cores, int threads) { Counts() = std::tuple(packages, cores, threads); }
    ~ForcedCensus() { Counts() = m_Before; }
    ForcedCensus(const ForcedCensus&) = delete;
    ForcedCensus& operator=(const ForcedCensus&) = delete;

private:
    static std::tuple<int&, int&, int&> Counts() {
        return {CensusPackages, CensusCoresPerPackage, CensusThreadsPerCore};
    }

    std::tuple<int, int, int> m_Before = Counts();
};

#if defined(__GLIBC__)

/// While it lives, no thread can start: the stack that the system hands to new threads is larger than the address
/// space.
class NoThreadCanStart {
public:
    NoThreadCanStart() {
        pthread_getattr_default_np(&m_Before);
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, (SIZE_MAX >> 20) * 15 << 16);
        m_Failed = pthread_setattr_default_np(&attributes) != 0;
        pthread_attr_destroy(&attributes);
    }
    ~NoThreadCanStart() {
        pthread_setattr_default_np(&m_Before);
        pthread_attr_destroy(&m_Before);
    }
    NoThreadCanStart(const NoThreadCanStart&) = delete;
    NoThreadCanStart& operator=(const NoThreadCanStart&) = delete;

    bool Failed() const { return m_Failed; }

private:
    pthread_attr_t m_Before;
    bool m_Failed = false;
};

#endif
