#pragma once

#include "moxcore/config/Localizer.h"
#include "quillomoxui/properties/UTF16String.h"

namespace quillomoxui::view {

/// The text of "key=default" for the locale in force.
[[nodiscard]] inline UTF16String Text(char const* keyAndDefault) {
    return moxcore::config::Localizer::Localize(keyAndDefault);
}

}  // namespace quillomoxui::view
