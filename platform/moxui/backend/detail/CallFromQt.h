#pragma once

#include <exception>

namespace moxui::backend {

/// Has the main thread's queue throw `exception`, which its failure handler then hears
/// (moxcore/threads/MainThread.h), or else the trace.
void PostException(std::exception_ptr exception) noexcept;

/// Calls `function`, a view's or a host's, where Qt has called us: Qt's loop lets no exception
/// through. What it throws is posted; false then.
template <class Function>
bool CallFromQt(Function const& function) noexcept {
    try {
        function();
        return true;
    } catch (...) {
        PostException(std::current_exception());
        return false;
    }
}

}  // namespace moxui::backend
