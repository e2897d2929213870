#pragma once

#include <cstddef>

#include "moxcore/threads/MainThread.h"

namespace testsupport {

/// Runs the main thread's queue, also what the functions in it queue in turn, until it is empty;
/// returns how many functions ran.
inline std::size_t DrainMainThread() {
    std::size_t total = 0;
    while (std::size_t const ran = moxcore::threads::MainThread::RunPending())
        total += ran;
    return total;
}

}  // namespace testsupport
