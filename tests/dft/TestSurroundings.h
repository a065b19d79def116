// Surroundings of the DFT engine that a test puts in place and that end with it: its memory, its environment, its
// variant, its threads.
#pragma once

#include "dft/dispatch/dft_dispatch.h"
#include "dft/memory/engine_memory.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

/// The engine's system allocator with a count of what is out, and with one request refused on demand. One at a time; it
/// starts and ends without cached blocks.
class TestAllocator {
public:
    TestAllocator() {
        dft::engine_free_buffers();
        s_Live = s_Requests = 0;
        s_Refused = -1;
        dft::engine_system_allocator = {Allocate, Release};
    }
    ~TestAllocator() {
        dft::engine_free_buffers();
        dft::engine_system_allocator = m_Before;
    }
    TestAllocator(const TestAllocator&) = delete;
    TestAllocator& operator=(const TestAllocator&) = delete;

    int Live() const { return s_Live; }
    int Requests() const { return s_Requests; }

    /// Refuses request `index`, counted from now on; -1: none.
    void Refuse(int index) {
        s_Requests = 0;
        s_Refused = index;
    }

private:
    static void* Allocate(std::size_t bytes) {
        if (s_Requests++ == s_Refused) {
            return nullptr;
        }
        ++s_Live;
        // Nobody writes to blocks of many gigabytes here, and no test machine need have them.
        return std::malloc(std::min<std::size_t>(bytes, std::size_t{1} << 30));
    }
    static void Release(void* block) {
        --s_Live;
        std::free(block);
    }

    static inline std::atomic<int> s_Live;
    static inline std::atomic<int> s_Requests;
    static inline std::atomic<int> s_Refused;
    dft::SystemAllocator m_Before = dft::engine_system_allocator;
};

/// An environment variable; null: not set.
class TestVariable {
public:
    TestVariable(const char* name, const char* value) : m_Name(name) {
        if (const char* const before = std::getenv(name)) {
            m_Before = before;
        }
        Set(value);
    }
    ~TestVariable() { Set(m_Before ? m_Before->c_str() : nullptr); }
    TestVariable(const TestVariable&) = delete;
    TestVariable& operator=(const TestVariable&) = delete;

    void Set(const char* value) { value != nullptr ? setenv(m_Name, value, 1) : unsetenv(m_Name); }

private:
    const char* m_Name;
    std::optional<std::string> m_Before;
};

/// One of the engine's process-wide numbers: `fast_mm_disabled`, `serial_switch`, `dft_variant_code`.
class TestNumber {
public:
    TestNumber(std::atomic<std::int32_t>& number, std::int32_t value) : m_Number(number), m_Before(number) {
        number = value;
    }
    ~TestNumber() { m_Number = m_Before; }
    TestNumber(const TestNumber&) = delete;
    TestNumber& operator=(const TestNumber&) = delete;

private:
    std::atomic<std::int32_t>& m_Number;
    std::int32_t m_Before;
};

/// Lets the engine fork up to `threads` threads for as long as it lives; 1: none.
class EngineThreads {
public:
    explicit EngineThreads(int threads) : m_Switch(dft::serial_switch, threads == 1) { omp_set_num_threads(threads); }
    ~EngineThreads() { omp_set_num_threads(m_Before); }
    EngineThreads(const EngineThreads&) = delete;
    EngineThreads& operator=(const EngineThreads&) = delete;

private:
    TestNumber m_Switch;
    int m_Before = omp_get_max_threads();
};

/// Serial, with counted memory that must all have come back at the end.
class Descriptor : public ::testing::Test {
protected:
    ~Descriptor() override {
        dft::engine_free_buffers();
        EXPECT_EQ(m_Allocator.Live(), 0);
    }

    TestNumber m_Enabled{dft::fast_mm_disabled, 0};
    TestNumber m_Serial{dft::serial_switch, 1};
    TestAllocator m_Allocator;
};

/// `work(index)` on each of so many threads at once.
inline void OnThreads(int threads, const std::function<void(int)>& work) {
    std::vector<std::thread> running;
    for (int index = 0; index < threads; ++index) {
        running.emplace_back(work, index);
    }
    for (std::thread& thread : running) {
        thread.join();
    }
}
