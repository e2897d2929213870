#pragma once

#include <string>
#include <vector>

#include "host/media/MovieProbe.h"

namespace quillohost {

/// What ffmpeg is told to make of the movie's streams: H.264 in BT.709 (below 720 lines in BT.601),
/// limited range and tagged as such, progressive, with the movie's own times; stereo AAC. Follows
/// from what was probed alone.
[[nodiscard]] std::vector<std::string> ExportSettings(Movie const& movie);

}  // namespace quillohost
