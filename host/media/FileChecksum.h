#pragma once

#include <filesystem>
#include <string>

namespace quillohost {

/// The SHA-256 of the file's contents in lower-case hexadecimal. Reads the whole file, so never
/// call it on the main thread; any other. A Failure (Export) when it cannot be read.
[[nodiscard]] std::string Sha256OfFile(std::filesystem::path const& file);

}  // namespace quillohost
