#pragma once

#include <filesystem>

#include "quillohostkit/Export.h"

namespace quillohostkit {

/// Makes `path`, empty, when it is missing, and closes it to other users. A Failure (Other) when
/// that is impossible, or it is a link or another user's. Any thread.
QUILLOHOSTKIT_API void MakeOwnFile(std::filesystem::path const& path);

}  // namespace quillohostkit
