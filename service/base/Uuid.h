#pragma once

#include <string>
#include <string_view>

namespace quilloservice {

inline constexpr std::string_view kNullUuid = "00000000-0000-0000-0000-000000000000";

/// Whether `text` is a UUID in lower-case 8-4-4-4-12 form. Such text is safe as a file name.
bool IsUuid(std::string_view text);

/// A random UUID (version 4), from a secure random source.
std::string NewUuid();

/// The UUID (version 8) derived from `path`, for sample data: always the same for the same path.
std::string UuidOf(std::string_view path);

}  // namespace quilloservice
