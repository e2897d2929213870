#pragma once

#include <filesystem>
#include <string>

#include "quillohostkit/Export.h"

namespace quillohostkit {

/// The SHA-256 of the file's contents in lower-case hexadecimal. Reads the whole file, so never
/// call it on the main thread; any other. A Failure (Export) when it cannot be read.
[[nodiscard]] QUILLOHOSTKIT_API std::string Sha256OfFile(std::filesystem::path const& file);

}  // namespace quillohostkit
