#pragma once

#include "quillohostkit/ShareState.h"

namespace quillohostkit {

/// What a ShareState answers, but the message.
struct ShareState::Values {
    QString signedInAs;
    Phase phase = Phase::Idle;
    QString title;
    double progress = -1;
    QString link;
    int version = 0;
    bool canCancel = false;
    bool canShareAgain = false;

    friend bool operator==(Values const&, Values const&) = default;
};

}  // namespace quillohostkit
