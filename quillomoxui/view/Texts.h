#pragma once

#include "moxcore/config/Localizer.h"
#include "moxcore/threads/Clock.h"
#include "quillomoxui/properties/UTF16String.h"

namespace quillomoxui::view {

/// The text of "key=default" for the locale in force.
[[nodiscard]] inline UTF16String Text(char const* keyAndDefault) {
    return moxcore::config::Localizer::Localize(keyAndDefault);
}

/// The same, with `time` as the user's locale writes it where the text has "{time}".
[[nodiscard]] UTF16String TextWithTime(char const* keyAndDefault, moxcore::threads::TimePoint time);

}  // namespace quillomoxui::view
