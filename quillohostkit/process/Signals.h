#pragma once

#include <csignal>

#include "quillohostkit/Export.h"

namespace quillohostkit {

/// Signals that say nothing to a program with windows. Their default is to end it at once, so it
/// may have them ignored.
inline constexpr int kIdleSignals[] = {SIGPIPE,   SIGUSR1, SIGUSR2, SIGALRM,
                                       SIGVTALRM, SIGPROF, SIGPOLL};

/// For a new process, before it becomes another program: undoes what its parent has changed, the
/// mask of blocked signals and what kIdleSignals do. Allowed after a fork.
QUILLOHOSTKIT_API void GiveSignalsBack() noexcept;

}  // namespace quillohostkit
