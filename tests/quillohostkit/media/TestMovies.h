#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "nlohmann/json.hpp"
#include "quillohostkit/media/MovieProbe.h"

namespace testmovies {

/// What can go into a movie, as arguments of ffmpeg.
inline std::vector<std::string> const kPicture{"-f", "lavfi", "-i", "testsrc2=s=97x55:d=1"};
inline std::vector<std::string> const kSound{"-f", "lavfi", "-i", "sine=d=1"};

/// Encodes a movie into `file`, in the format that its extension names.
void Make(std::filesystem::path const& file, std::vector<std::string> const& arguments);

/// What ffprobe tells of the streams and the container of `file`.
[[nodiscard]] nlohmann::json Describe(std::filesystem::path const& file);

/// The colour in the middle of the first picture of `file`, as it is shown: 0 to 255 each.
struct Colour {
    int red = 0;
    int green = 0;
    int blue = 0;
};
[[nodiscard]] Colour FirstColour(std::filesystem::path const& file);

/// When each picture of `file` is shown, in milliseconds.
[[nodiscard]] std::vector<int> PictureTimes(std::filesystem::path const& file);

/// How many pictures of `file` show two moments in alternate lines.
[[nodiscard]] int CountCombed(std::filesystem::path const& file);

}  // namespace testmovies
