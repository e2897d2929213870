#pragma once

#include <string>
#include <string_view>

namespace quillohost {

/// How many columns of a terminal `text` takes: two for each character of Chinese, Japanese and
/// Korean, none for marks that join the character before them.
[[nodiscard]] int CountColumns(std::string_view text);

/// As much of the beginning of `text` as `width` columns hold, in whole characters.
[[nodiscard]] std::string FirstColumns(std::string_view text, int width);

}  // namespace quillohost
