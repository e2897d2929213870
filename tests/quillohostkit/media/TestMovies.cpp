#include "tests/quillohostkit/media/TestMovies.h"

#include <cmath>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "moxcore/threads/MainThread.h"

namespace testmovies {
namespace {

std::string Run(std::string const& program, std::vector<std::string> const& arguments) {
    using namespace quillohostkit;
    std::string output;
    std::string error;
    std::optional<ExitStatus> ended;
    ChildProcess const process(FindFfmpegProgram(program), arguments, ChildProcess::Input::Nothing,
                               {.onOutput = [&](auto& line) { output += line + '\n'; },
                                .onError = [&](auto& line) { error += line + '\n'; },
                                .onExit = [&](auto status) { ended = status; }});
    moxcore::threads::MainThread::RunUntil([&ended] { return ended.has_value(); });
    if (!ended->IsSuccess()) throw std::runtime_error(program + ": " + error);
    return output;
}

}  // namespace

void Make(std::filesystem::path const& file, std::vector<std::string> const& arguments) {
    std::vector<std::string> all{"-nostdin", "-v", "error", "-y"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    all.push_back(quillohostkit::FfmpegFileName(file));
    static_cast<void>(Run("ffmpeg", all));
}

nlohmann::json Describe(std::filesystem::path const& file) {
    return nlohmann::json::parse(
        Run("ffprobe", {"-v", "error", "-of", "json", "-show_streams", "-show_format",
                        "-show_chapters", quillohostkit::FfmpegFileName(file)}));
}

Colour FirstColour(std::filesystem::path const& file) {
    auto const pixel = file.parent_path() / "pixel.rgb";
    Make(pixel, {"-i", quillohostkit::FfmpegFileName(file), "-frames:v", "1", "-vf",
                 "format=rgb24,crop=1:1", "-f", "rawvideo"});
    std::ifstream in(pixel, std::ios::binary);
    Colour colour{in.get(), in.get(), in.get()};
    std::filesystem::remove(pixel);
    return colour;
}

std::vector<int> PictureTimes(std::filesystem::path const& file) {
    std::istringstream lines(
        Run("ffprobe", {"-v", "error", "-select_streams", "V:0", "-of", "csv=p=0", "-show_entries",
                        "frame=pts_time", quillohostkit::FfmpegFileName(file)}));
    std::vector<int> times;
    for (std::string line; std::getline(lines, line);)
        if (!line.empty()) times.push_back(static_cast<int>(std::lround(1000 * std::stod(line))));
    return times;
}

int CountCombed(std::filesystem::path const& file) {
    std::istringstream lines(
        Run("ffmpeg",
            {"-nostdin", "-v", "error", "-i", quillohostkit::FfmpegFileName(file), "-vf",
             "idet,metadata=print:key=lavfi.idet.single.current_frame:file=-", "-f", "null", "-"}));
    int combed = 0;
    for (std::string line; std::getline(lines, line);)
        combed += line.ends_with("=tff") || line.ends_with("=bff") ? 1 : 0;
    return combed;
}

}  // namespace testmovies
