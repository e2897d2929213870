#pragma once

#include <string>
#include <string_view>

namespace quilloservice {

inline constexpr std::string_view kNullUuid = "00000000-0000-0000-0000-000000000000";

/// Whether `text` is a UUID in its lower-case 8-4-4-4-12 form, and so safe as a file's name.
bool IsUuid(std::string_view text);

/// A random UUID (version 4) that nobody can guess.
std::string NewUuid();

/// The same UUID (version 8) for the same `path` every time; what sample data is known by.
std::string UuidOf(std::string_view path);

}  // namespace quilloservice
