#pragma once

#include "quillohostkit/process/Failure.h"

namespace quillohost {

/// The program's exit codes, by the kind of failure.
enum class ExitCode {
    Done = 0,
    Other = 1,  ///< the host's own: its files, its output
    Usage = 2,
    SignIn = 3,  ///< also a service that cannot be reached
    Location = 4,
    Export = 5,
    Upload = 6,
    Link = 7,
    Cancelled = 8,  ///< by the user, in a dialog
    Interrupted = 130,
};

/// How the program ends after a failure of this kind.
[[nodiscard]] constexpr ExitCode ExitCodeOf(quillohostkit::FailureKind kind) {
    using quillohostkit::FailureKind;
    switch (kind) {
        case FailureKind::Other:
            break;
        case FailureKind::Usage:
            return ExitCode::Usage;
        case FailureKind::SignIn:
            return ExitCode::SignIn;
        case FailureKind::Location:
            return ExitCode::Location;
        case FailureKind::Export:
            return ExitCode::Export;
        case FailureKind::Upload:
            return ExitCode::Upload;
        case FailureKind::Link:
            return ExitCode::Link;
        case FailureKind::Cancelled:
            return ExitCode::Cancelled;
        case FailureKind::Interrupted:
            return ExitCode::Interrupted;
    }
    return ExitCode::Other;
}

}  // namespace quillohost
