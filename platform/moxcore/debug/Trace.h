#pragma once

#include <functional>
#include <string>

#include "moxcore/Export.h"

namespace moxcore::debug {

// The trace channel: text for developers, by category. Silent until a category is switched on, with
// SetTraceLevel or with MOXCORE_TRACE=Category:level[,Category:level...] in the environment. Any
// thread.

/// Receives each text traced: its level, its category, the text. May be called on any thread, by
/// one at a time; must not trace in turn. What it throws is swallowed.
using TraceSink =
    std::function<void(int level, std::string const& category, std::string const& text)>;

/// Grows whenever an answer of TraceEnabled may have changed, so that a trace site can keep the
/// answer.
[[nodiscard]] MOXCORE_API unsigned TraceChangeCount();

/// Whether texts of `category` at `level` are wanted. Bit 0 of `flags` must be set: it names the
/// sink.
[[nodiscard]] MOXCORE_API bool TraceEnabled(char const* category, int level, unsigned flags);

/// Hands `text` to the sink when its category is on at `level`.
MOXCORE_API void Trace(int level, char const* category, std::string const& text);

/// Wants texts of `category` up to `level`, 0 being the most important; a level below 0 switches it
/// off.
MOXCORE_API void SetTraceLevel(std::string const& category, int level);

/// Where texts go. An empty sink restores the standard one, which writes to standard error.
MOXCORE_API void SetTraceSink(TraceSink sink);

}  // namespace moxcore::debug
