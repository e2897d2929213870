#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quilloauth {

/// What stands behind the "?" in a GET request for `path`, which may be nothing; none when `head`,
/// the request's head, is no such request. Any thread.
[[nodiscard]] std::optional<std::string> ReadLoopbackQuery(std::string_view head,
                                                           std::string_view path);

}  // namespace quilloauth
