#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "quillocommon/Export.h"

namespace quillocommon {

/// What the library was doing when it failed.
enum class Step {
    SignIn,
    ReadUser,
    ReadLocations,
    Upload,
    CreateReviewLink,
    AddToReviewLink,
    // Warnings: a host shows them to its user and goes on.
    EncryptRequests,  ///< requests go to another machine in plain text; reported once
    ListLocations,    ///< a list was read, but not all of it stands in the tree
    KeepSignIn,       ///< the sign-in is not kept where it should be
    HandleEvent  ///< a function that an event has called, of a view's or the host's, has thrown
};

/// Whether a failure of `step` stops nothing: it is a warning.
[[nodiscard]] constexpr bool IsWarning(Step step) {
    return step >= Step::EncryptRequests;
}

/// A step that has failed for good: its retries are used up, or there was no point in any. See
/// IsWarning for those that stop nothing.
struct Failure {
    Step step;
    std::int32_t result;  ///< the failure's 32-bit result, negative
    int httpStatus;       ///< the service's last answer; 0 when none came
    std::string message;  ///< one sentence: what failed, and why. Never holds a token.
};

using FailureListener = std::function<void(Failure const&)>;

/// Ends a listener's subscription when its last reference is dropped.
class QUILLOSERVICES_API FailureSubscription {
public:
    virtual ~FailureSubscription();
};

/// Calls `listener` for every failure from now on, on the thread that found it, until the result is
/// dropped. The library itself stays silent about most failures; a host that wants to tell its user
/// why nothing happens listens here. A listener must not throw and must not subscribe or
/// unsubscribe. Any thread.
[[nodiscard]] QUILLOSERVICES_API std::shared_ptr<FailureSubscription> ListenToFailures(
    FailureListener listener);

/// Tells all listeners, and the trace channel (category "QuilloNative", level 1). Called by the
/// service's libraries. Any thread.
QUILLOSERVICES_API void ReportFailure(Failure const& failure);

}  // namespace quillocommon
