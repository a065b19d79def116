// Three threads, one a colour plane, for the length of one call.
#pragma once

#include <alloca.h>
#include <cstddef>
#include <pthread.h>

namespace focus {

/// What a thread entry does with its job, which has a `stackOffset` in bytes and a `Run()`. The three workers run the
/// same code on buffers of like shape at the same time; reserving 0, 128 and 256 bytes keeps their stack frames at
/// different offsets.
template <typename Job>
void* RunJob(void* argument) {
    Job& job = *static_cast<Job*>(argument);
    volatile char* const reserved = static_cast<volatile char*>(alloca(static_cast<std::size_t>(job.stackOffset) + 1));
    reserved[0] = 0;
    job.Run();
    return nullptr;
}

/// How many jobs of the last `RunOnThreads` on this thread were left undone: the library's operations report nothing,
/// and the command, which may look inside, must not write such a picture.
inline int& WorkersLeftOut() {
    static thread_local int count = 0;
    return count;
}

/// Starts one thread a job on `entry`, in order, and joins them in the same order. A job whose thread could not be
/// started is left undone, without a word; if it has a `LeaveOut()`, that is called here at once.
template <typename Job>
void RunOnThreads(void* (*entry)(void*), Job (&jobs)[3], bool (&started)[3]) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_JOINABLE);
    pthread_t threads[3];
    WorkersLeftOut() = 0;
    for (int k = 0; k < 3; ++k) {
        started[k] = pthread_create(&threads[k], &attributes, entry, &jobs[k]) == 0;
        WorkersLeftOut() += started[k] ? 0 : 1;
        if constexpr (requires { jobs[k].LeaveOut(); }) {
            if (!started[k]) {
                jobs[k].LeaveOut();
            }
        }
    }
    pthread_attr_destroy(&attributes);
    for (int k = 0; k < 3; ++k) {
        if (started[k]) {
            pthread_join(threads[k], nullptr);
        }
    }
}

template <typename Job>
void RunOnThreads(void* (*entry)(void*), Job (&jobs)[3]) {
    bool started[3];
    RunOnThreads(entry, jobs, started);
}

} // namespace focus
