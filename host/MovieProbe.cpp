#include "host/MovieProbe.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <system_error>

#include "host/Failure.h"

namespace quillohost {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse(fs::path const& movie, std::string const& reason) {
    throw Failure(ExitCode::Export, "Cannot share \"" + movie.string() + "\": " + reason);
}

/// The canonical path of a file that can be read and holds something.
fs::path ReadableFile(fs::path const& path) {
    std::error_code error;
    fs::path canonical = fs::canonical(path, error);
    if (error == std::errc::no_such_file_or_directory)
        Refuse(path, "there is no such file; check its name.");
    if (error) Refuse(path, error.message() + ".");
    if (fs::is_directory(canonical)) Refuse(path, "it is a directory; name a movie in it.");
    if (!fs::is_regular_file(canonical)) Refuse(path, "it is no file; name a movie.");
    int const file = open(canonical.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        Refuse(path, std::generic_category().message(errno) + "; check the rights to the file.");
    close(file);
    if (fs::file_size(canonical) == 0) Refuse(path, "it is empty; export it again.");
    return canonical;
}

/// What ffmpeg reads too but nobody would call a movie; null for a movie.
char const* OtherKind(std::string const& format) {
    if (format == "image2" || format.ends_with("_pipe"))
        return "it is a still picture; make a movie of it first.";
    if (format == "tty") return "it is a text; name a movie.";
    // What such a list names may be any file of this machine, which would then go out under the
    // movie's name.
    for (char const* list : {"concat", "hls", "dash", "sdp"})
        if (format.starts_with(list)) return "it is a list of other files; name a movie.";
    return nullptr;
}

/// Of "30000/1001", for instance; none of "0/0".
std::optional<double> FrameRate(std::string const& fraction) {
    char* rest = nullptr;
    double const pictures = std::strtod(fraction.c_str(), &rest);
    double const seconds = *rest == '/' ? std::strtod(rest + 1, nullptr) : 1;
    if (pictures > 0 && seconds > 0) return pictures / seconds;
    return std::nullopt;
}

}  // namespace

fs::path FindFfmpegProgram(std::string const& name) {
    auto program = FindProgram(name);
    if (program.empty())
        throw Failure(ExitCode::Export,
                      name + " is missing: install the package ffmpeg, or add it to PATH.");
    return program;
}

std::string FfmpegFileName(fs::path const& path) {
    return "file:" + path.string();
}

std::string FfmpegComplaint(std::string const& line, fs::path const& path) {
    std::string const prefix = FfmpegFileName(path) + ": ";
    return line.starts_with(prefix) ? line.substr(prefix.size()) : line;
}

MovieProbe::MovieProbe(fs::path const& path) : given(path) {
    movie.file = ReadableFile(path);
    ffprobe = std::make_unique<ChildProcess>(
        FindFfmpegProgram("ffprobe"),
        std::vector<std::string>{"-v", "error", "-protocol_whitelist", "file", "-of", "json",
                                 "-show_entries",
                                 "format=format_name,duration:stream=codec_type,avg_frame_rate:"
                                 "stream_disposition=attached_pic",
                                 FfmpegFileName(movie.file)},
        ChildProcess::Input::Nothing,
        ChildProcess::Hooks{
            .onOutput = [this](auto& line) { report += line; },
            .onError = [this](auto& line) { complaint = FfmpegComplaint(line, movie.file); },
            .onExit = [this](auto status) { OnExit(status); }});
}

void MovieProbe::OnExit(ExitStatus status) {
    try {
        if (!status.IsSuccess())
            Refuse(given, "it is no movie that ffmpeg can read (" + complaint + ").");
        promise.SetValue(ReadReport());
    } catch (...) {
        promise.SetException(std::current_exception());
    }
}

Movie MovieProbe::ReadReport() const {
    auto const parsed = nlohmann::json::parse(report);
    auto const& format = parsed.at("format");
    if (auto const* reason = OtherKind(format.value("format_name", ""))) Refuse(given, reason);

    Movie found = movie;
    for (auto const& stream : parsed.at("streams")) {
        auto const kind = stream.value("codec_type", "");
        bool const isCover =
            stream.contains("disposition") && stream["disposition"].value("attached_pic", 0) != 0;
        if (kind == "video" && !isCover && !found.hasPicture) {
            found.hasPicture = true;
            found.frameRate = FrameRate(stream.value("avg_frame_rate", ""));
        }
        found.hasSound |= kind == "audio";
    }
    if (!found.hasPicture && !found.hasSound) Refuse(given, "it has neither picture nor sound.");
    if (auto const text = format.value("duration", ""); !text.empty()) {
        double const seconds = std::strtod(text.c_str(), nullptr);
        if (seconds > 0) found.duration = seconds;
    }
    return found;
}

}  // namespace quillohost
