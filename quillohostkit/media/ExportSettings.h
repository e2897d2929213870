#pragma once

#include <string>
#include <vector>

#include "quillohostkit/media/MovieProbe.h"

namespace quillohostkit {

/// How long the last picture is shown.
enum class LastPicture {
    AsProbed,  ///< until the end that the file announces
    AsRead,    ///< for the time of one picture: the announced end cannot be read
};

/// ffmpeg's settings for the movie's streams: H.264 in BT.709 (below 720 lines in BT.601), limited
/// range and tagged as such, progressive, with the movie's own times; stereo AAC. They follow from
/// the probe alone.
[[nodiscard]] std::vector<std::string> ExportSettings(Movie const& movie, LastPicture lastPicture);

}  // namespace quillohostkit
