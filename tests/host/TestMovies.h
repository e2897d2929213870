#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/MovieProbe.h"
#include "nlohmann/json.hpp"

namespace testmovies {

/// What can go into a movie, as arguments of ffmpeg.
inline std::vector<std::string> const kPicture{"-f", "lavfi", "-i", "testsrc2=s=97x55:d=1"};
inline std::vector<std::string> const kSound{"-f", "lavfi", "-i", "sine=d=1"};

/// Encodes a movie into `file`, in the format that its extension names.
void Make(std::filesystem::path const& file, std::vector<std::string> const& arguments);

/// What ffprobe tells of the streams and the container of `file`.
[[nodiscard]] nlohmann::json Describe(std::filesystem::path const& file);

}  // namespace testmovies
