#pragma once

#include "moxcore/threads/MainThread.h"

namespace moxui::backend {

/// Calls `function`, a view's or a host's, where Qt has called us: Qt's loop lets no exception
/// through. What it throws is reported (moxcore/threads/MainThread.h); false then.
template <class Function>
bool CallFromQt(Function const& function) noexcept {
    try {
        function();
        return true;
    } catch (...) {
        moxcore::threads::MainThread::ReportFailure(std::current_exception());
        return false;
    }
}

}  // namespace moxui::backend
