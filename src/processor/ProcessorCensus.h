// What the library finds out, once at load, about the processors it runs on.
#pragma once

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

} // namespace processor

/// Processor packages; -1 where it could not be found out, 0 where a package reports more logical processors than the
/// system has in use. The three counts are filled at load, are zero before, and are only read afterwards; they are no
/// constants so that tests can force either form of an operation that chooses by them.
extern int CensusPackages;

/// Cores in one package, 1..64.
extern int CensusCoresPerPackage;

/// Logical processors of one core, 0..255. By the rule of `CountProcessors` 0 on all processors with several cores on
/// which hyper-threading is not possible.
extern int CensusThreadsPerCore;

/// Counts the processors of this machine. Stores packages (-1 where unknown), cores per package and logical processors
/// per core, and returns a `processor::HyperThreadingStatus`.
///
/// On "GenuineIntel" processors of family 15 and above that report hyper-threading, the calling thread visits one
/// processor after the other and is then free to run where it was before. On all others it is never moved.
int CountProcessors(int& packages, int& coresPerPackage, int& threadsPerCore);

/// The same for the machine behind `port`.
int CountProcessors(processor::ProcessorPort& port, int& packages, int& coresPerPackage, int& threadsPerCore);
