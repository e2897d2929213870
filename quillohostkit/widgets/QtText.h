#pragma once

#include <QString>
#include <string_view>

#include "moxcore/config/Localizer.h"

namespace quillohostkit {

/// The text of "key=default" for the locale in force, with `values` filled in, as Qt takes it.
[[nodiscard]] inline QString QtText(std::string_view keyAndDefault,
                                    moxcore::config::TextValues const& values = {}) {
    return QString::fromStdString(moxcore::config::Text(keyAndDefault, values));
}

}  // namespace quillohostkit
