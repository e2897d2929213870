#pragma once

#include <stdexcept>
#include <string>

#include "quillohostkit/Export.h"

namespace quillohostkit {

/// What could not be done.
enum class FailureKind {
    Other,        ///< files of the program's own, its output
    Usage,        ///< the caller has asked for something impossible
    SignIn,       ///< also: the service cannot be reached
    Location,     ///< the destination
    Export,       ///< the movie, or its export
    Upload,       ///< the movie is not at the service
    Link,         ///< the movie is not on its link
    Cancelled,    ///< by the user, in a dialog
    Interrupted,  ///< by a signal
};

/// Why something was not done. `what` is one line for the user: what failed and what to do about
/// it.
class QUILLOHOSTKIT_API Failure : public std::runtime_error {
public:
    Failure(FailureKind kind, std::string const& message)
        : std::runtime_error(message), kind(kind) {}

    [[nodiscard]] FailureKind GetKind() const noexcept { return kind; }

private:
    FailureKind kind;
};

}  // namespace quillohostkit
