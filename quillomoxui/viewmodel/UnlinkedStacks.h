#pragma once

#include "moxcore/utility/Guid.h"

namespace quillomoxui::unlinkedstacks {

// The version stacks that are not on their review link yet. They are kept on disk, so that a share
// which ends with the process is completed by the next one instead of taken for done: one empty
// file for each, in a directory of its own below the user's state directory. Files need no lock
// between processes, and each is written at once or not at all. What is written survives the end of
// the process, not a power cut. Any thread. No function throws: what cannot be kept is reported to
// the failure listeners.

[[nodiscard]] bool Contains(moxcore::utility::Guid const& stack);
void Add(moxcore::utility::Guid const& stack);
void Remove(moxcore::utility::Guid const& stack);

}  // namespace quillomoxui::unlinkedstacks
