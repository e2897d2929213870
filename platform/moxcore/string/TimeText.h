#pragma once

#include "moxcore/Export.h"
#include "moxcore/string/UTF16String.h"
#include "moxcore/threads/Clock.h"

namespace moxcore::string {

/// The time of day of `time` here, to the minute, as the user's locale writes it: "14:05",
/// "2:05 PM". The locale is that of the environment (LC_ALL, LC_TIME, LANG). Any thread.
[[nodiscard]] MOXCORE_API UTF16String FormatTimeOfDay(threads::TimePoint time);

}  // namespace moxcore::string
