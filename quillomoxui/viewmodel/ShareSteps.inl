#pragma once

#include <exception>

#include "moxcore/config/Error.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"
#include "quillomoxui/viewmodel/ShareReports.h"

namespace quillomoxui {

// A share is what one press of the Share button begins. Its handlers hold the fields as they were
// then. What belongs to it alone (its asset's strings, its mark, its exported file) they change
// whatever has happened since; what is shown, the status and the fields belong to the current share
// of the current user. Where two things are checked and changed, that happens under the lock.

/// Does `action`, which may set properties, unless another share has begun since, or another user
/// has come; whether it did.
template <class Action>
bool ShareForReviewViewModel::IfCurrent(Fields const& share, Action action) {
    std::lock_guard lock(mutex);
    if (!IsCurrentLocked(share)) return false;
    action();
    return true;
}

/// Takes a step of a share that calls the host: what the host throws ends the share, and goes on to
/// the caller.
template <class Step>
void ShareForReviewViewModel::Guarded(Guid const& shareID, Step step) {
    try {
        step();
    } catch (...) {
        reports->Fail(
            shareID,
            {ShareFailureReason::HostCallback,
             "The movie was not shared: the editor failed (" +
                 moxcore::config::ExtractMessageFromException(std::current_exception()) + ")."});
        throw;
    }
}

}  // namespace quillomoxui
