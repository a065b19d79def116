// What the library finds out, once at load, about the processors it runs on.
#pragma once

#include <cstdint>

namespace processor {

class ProcessorPort;

/// What `CountProcessors` returns.
enum HyperThreadingStatus : int {
    NotCapable = 0,
    Enabled = 1,
    Disabled = 2,
    CapableNotEnabled = 3,
    CannotBeDetected = 4,
};

/// A sentence for each `HyperThreadingStatus`.
extern const char* const HyperThreadingTexts[5];

/// What `ProcessorCensus` finds out. Flags are 1 or 0.
struct CensusResults {
    std::uint32_t hasMMX = 0;
    std::uint32_t hasSSE = 0;
    std::uint32_t hasSSE2 = 0;
    std::uint32_t hasSSE3 = 0;    ///< looked at on "GenuineIntel" only, as is the next
    std::uint32_t hasMonitor = 0; ///< the instructions MONITOR and MWAIT
    std::uint32_t has3DNow = 0;   ///< not looked at on "GenuineIntel", as the next
    std::uint32_t has3DNowExtensions = 0;
    std::uint32_t family = 0;         ///< 0..15; on "GenuineIntel" the extended family is added, 0..270
    std::uint32_t model = 0;          ///< 0..15; on "GenuineIntel" the extended model stands above, 0..255
    std::uint32_t stepping = 0;       ///< 0..15
    std::uint32_t type = 0;           ///< 0..3, kept on "GenuineIntel" only
    char vendor[13] = "------------"; ///< as the processor gives it
    char name[49] = "";               ///< for display, without the clock; may be empty
    std::uint32_t megahertz = 0; ///< measured clock, or an estimate by family without a time stamp counter; 0: unknown
    std::int32_t status = NotCapable; ///< a `HyperThreadingStatus`
};

/// The results for this machine: filled at load, constant afterwards.
extern const CensusResults& MachineResults;

} // namespace processor

/// The flags by which members of `KernelTable` are chosen; nothing but the flags of leaf 1 counts, whatever the vendor.
/// Return 1 or 0; 0 before the census and on a processor without CPUID.
std::uint32_t ProcessorHasMMX();
std::uint32_t ProcessorHasSSE();
std::uint32_t ProcessorHasSSE2();

/// Members of `processor::MachineResults` under their own names.
extern const char (&ProcessorVendor)[13];
extern const char (&ProcessorName)[49];
extern const std::uint32_t& ProcessorMHz;
extern const std::int32_t& ProcessorHTStatus;

/// Processor packages; -1 where it could not be found out, 0 where a package reports more logical processors than the
/// system has in use. The three counts are zero before the load, which fills them, and are only read afterwards; they
/// are no constants so that tests can force either form of an operation that chooses by them.
extern int CensusPackages;

/// Cores in one package, 1..64 once counted.
extern int CensusCoresPerPackage;

/// Logical processors of one core, 0..255. By the rule of `CountProcessors` 0 wherever a package reports fewer logical
/// processors than cores, on processors of several cores without hyper-threading among others, and where the packages
/// are unknown.
extern int CensusThreadsPerCore;

/// Examines the processor of this machine into `processor::MachineResults`; to be called once, at load. Returns 0, or
/// -1 where the processor has no CPUID, with all results as they stood. Measures the clock, which takes 0.3 to 2.1
/// milliseconds of processor time, and may visit the processors as `CountProcessors` does.
int ProcessorCensus();

/// The same for the machine behind `port`, into `results`.
int ProcessorCensus(processor::ProcessorPort& port, processor::CensusResults& results);

/// Counts the processors of this machine. Stores packages (-1 where unknown), cores per package and logical processors
/// per core, and returns a `processor::HyperThreadingStatus`.
///
/// On "GenuineIntel" processors whose family field is 15 or whose extended family is not 0, and that report
/// hyper-threading with two or more logical processors in a package, the calling thread visits one
/// processor after another and is then free to run where it was before. On all others it is never moved.
int CountProcessors(int& packages, int& coresPerPackage, int& threadsPerCore);

/// The same for the machine behind `port`.
int CountProcessors(processor::ProcessorPort& port, int& packages, int& coresPerPackage, int& threadsPerCore);
