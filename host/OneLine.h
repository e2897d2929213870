#pragma once

#include <string>

namespace quillohost {

/// `text`, which may come from elsewhere, fit to be shown on a terminal as one line: its control
/// characters are replaced by "?".
[[nodiscard]] std::string OneLine(std::string text);

}  // namespace quillohost
