#include "quillohostkit/media/MovieProbe.h"

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string_view>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/media/MovieDamage.h"
#include "quillohostkit/process/Failure.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

namespace fs = std::filesystem;

/// The file that the program has as its standard input. Opened through this name, it can be read at
/// any place, and each program has a place of its own.
constexpr char const* kStandardInput = "file:/proc/self/fd/0";

/// The formats that are shared, by ffmpeg's names. None of them has ffmpeg open a second file: what
/// a playlist names may be any file of this machine, which would then go out under the movie's
/// name.
constexpr char const* kMovieFormats =
    "aac,ac3,aiff,amr,apng,asf,au,av1,avi,caf,cine,dirac,dnxhd,dts,dtshd,dv,eac3,flac,flv,gif,gxf,"
    "h261,h263,h264,hevc,ivf,lxf,m4v,matroska,mjpeg,mlp,mov,mp3,mpeg,mpegts,mpegvideo,mxf,nut,obu,"
    "ogg,r3d,rm,truehd,tta,vc1,voc,w64,wav,wtv,wv,yuv4mpegpipe";

/// Looked into for a refusal that says what it is.
constexpr char const* kPictureFormats =
    "bmp_pipe,dpx_pipe,exr_pipe,jpeg_pipe,png_pipe,tiff_pipe,webp_pipe";

/// Enough to hold one of each stream.
constexpr char const* kFirstPackets = "%+#32";

/// Of "30000/1001", for instance; none of "0/0".
std::optional<double> FrameRate(std::string const& fraction) {
    char* rest = nullptr;
    double const pictures = std::strtod(fraction.c_str(), &rest);
    double const seconds = *rest == '/' ? std::strtod(rest + 1, nullptr) : 1;
    if (pictures > 0 && seconds > 0) return pictures / seconds;
    return std::nullopt;
}

double SecondsOf(nlohmann::json const& part, char const* name) {
    return std::strtod(part.value(name, "").c_str(), nullptr);  // 0 for "N/A"
}

/// "00:01:02.345000000", or a number of seconds.
std::optional<double> ReadTime(std::string const& text) {
    double seconds = 0;
    for (char const* rest = text.c_str(); *rest != 0;) {
        char* end = nullptr;
        seconds = seconds * 60 + std::strtod(rest, &end);
        if (end == rest) return std::nullopt;
        rest = *end == ':' ? end + 1 : end;
        if (*end != ':' && *end != 0) return std::nullopt;
    }
    if (seconds > 0) return seconds;
    return std::nullopt;
}

/// When the stream ends, if the file says so, in seconds from `start`, the time at which the movie
/// starts. Matroska files tell the end, others how long the stream is from its own start.
std::optional<double> EndOf(nlohmann::json const& stream, double start) {
    if (auto const duration = ReadTime(stream.value("duration", "")))
        return *duration + std::max(0.0, SecondsOf(stream, "start_time") - start);
    if (!stream.contains("tags")) return std::nullopt;
    auto end = ReadTime(stream["tags"].value("DURATION", ""));
    if (end) *end -= start;
    return end;
}

/// How long the announced number of pictures is. The duration that ffprobe prints for an AVI file
/// is measured by the file, so that it shrinks with one that is cut.
std::optional<double> AnnouncedDuration(nlohmann::json const& stream) {
    double const pictures = std::strtod(stream.value("nb_frames", "").c_str(), nullptr);
    auto const rate = FrameRate(stream.value("avg_frame_rate", ""));
    if (pictures > 0 && rate) return pictures / *rate;
    return std::nullopt;
}

Picture ReadPicture(nlohmann::json const& stream, double start) {
    return {.height = stream.value("height", 0),
            .pixelFormat = stream.value("pix_fmt", ""),
            .range = stream.value("color_range", ""),
            .matrix = stream.value("color_space", ""),
            .primaries = stream.value("color_primaries", ""),
            .transfer = stream.value("color_transfer", ""),
            .averageRate = FrameRate(stream.value("avg_frame_rate", "")),
            .nominalRate = stream.value("r_frame_rate", ""),
            .end = EndOf(stream, start)};
}

Sound ReadSound(nlohmann::json const& stream, int number) {
    auto const tags = stream.value("tags", nlohmann::json::object());
    auto description = tags.value("title", tags.value("language", ""));
    if (description.empty() || description == "und")
        description = Text("$$$/Vistrel/quillohostkit/Movie/Track=track {number}",
                           {{"number", std::to_string(number + 1)}});
    return {.number = number,
            .channels = stream.value("channels", 0),
            .description = std::move(description)};
}

bool IsProtected(nlohmann::json const& report) {
    for (auto const& packet : report.value("packets", nlohmann::json::array()))
        for (auto const& data : packet.value("side_data_list", nlohmann::json::array()))
            if (data.value("side_data_type", "") == "Encryption info") return true;
    return false;
}

}  // namespace

fs::path FindFfmpegProgram(std::string const& name) {
    auto program = FindProgram(name);
    if (program.empty())
        throw Failure(FailureKind::Export,
                      Text("$$$/Vistrel/quillohostkit/Movie/NoFfmpeg={program} is missing: install "
                           "the package ffmpeg, or add it to PATH.",
                           {{"program", name}}));
    return program;
}

std::string FfmpegFileName(fs::path const& path) {
    return "file:" + path.string();
}

std::vector<std::string> FfmpegMovieInput(std::string const& format) {
    return {"-protocol_whitelist", "file", "-f", format, "-i", kStandardInput};
}

std::string FfmpegComplaint(std::string const& line) {
    std::string_view said = line;
    // "[matroska,webm @ 0x55e5cf5eda00] ": which part of ffmpeg complains, and where that lies.
    if (auto const end = said.find("] "); said.starts_with('[') && end != said.npos)
        if (said.substr(0, end).find(" @ 0x") != said.npos) said.remove_prefix(end + 2);
    std::string const prefix = std::string(kStandardInput) + ": ";
    if (said.starts_with(prefix)) said.remove_prefix(prefix.size());
    return std::string(said);
}

MovieProbe::MovieProbe(fs::path const& path) : given(path) {
    movie.opened = std::make_shared<MovieFile const>(path);
    movie.file = movie.opened->Path();
    ffprobe = std::make_unique<ChildProcess>(
        FindFfmpegProgram("ffprobe"),
        std::vector<std::string>{
            "-v", "error", "-protocol_whitelist", "file", "-format_whitelist",
            std::string(kMovieFormats) + ',' + kPictureFormats, "-of", "json", "-read_intervals",
            kFirstPackets, "-show_entries",
            "format=format_name,start_time,duration:stream=start_time,codec_type,avg_frame_rate,r_"
            "frame_rate,height,"
            "pix_fmt,color_range,color_space,color_primaries,color_transfer,channels,duration,nb_"
            "frames:"
            "stream_disposition=attached_pic,default:stream_tags=title,language,DURATION:"
            "packet=stream_index:packet_side_data=side_data_type",
            kStandardInput},
        movie.opened->Number(),
        ChildProcess::Hooks{.onOutput = [this](auto& line) { report += line; },
                            .onError = [this](auto& line) { OnComplaint(line); },
                            .onExit = [this](auto status) { OnExit(status); }});
}

void MovieProbe::OnComplaint(std::string const& line) {
    isOfOtherFormat |= line.find("Format not on whitelist") != std::string::npos;
    // The first complaint says more than those that follow from it.
    complaint += (complaint.empty() ? "" : "; ") + FfmpegComplaint(line);
}

void MovieProbe::OnExit(ExitStatus status) {
    try {
        if (isOfOtherFormat)
            RefuseMovie(
                given,
                Text("$$$/Vistrel/quillohostkit/Movie/Format=it is in no format that is shared: "
                     "lists of other files and texts are not either; name a movie."));
        if (!status.IsSuccess()) RefuseMovie(given, ExplainComplaint(complaint));
        promise.SetValue(ReadReport());
    } catch (...) {
        promise.SetException(std::current_exception());
    }
}

Movie MovieProbe::ReadReport() const {
    auto const parsed = nlohmann::json::parse(report);
    auto const& format = parsed.at("format");
    auto const names = format.value("format_name", "");  // of one format, as "matroska,webm"
    if (names.ends_with("_pipe"))
        RefuseMovie(given, Text("$$$/Vistrel/quillohostkit/Movie/Still=it is a still picture; make "
                                "a movie of it first."));

    if (IsProtected(parsed))
        RefuseMovie(given, Text("$$$/Vistrel/quillohostkit/Movie/Protected=it is protected against "
                                "copying; share an export without protection."));

    Movie found = movie;
    found.format = names.substr(0, names.find(','));
    int sounds = 0;
    bool hasDefaultSound = false;
    double const start = SecondsOf(format, "start_time");
    std::optional<double> soundEnd;
    for (auto const& stream : parsed.at("streams")) {
        auto const kind = stream.value("codec_type", "");
        bool const isCover =
            stream.contains("disposition") && stream["disposition"].value("attached_pic", 0) != 0;
        if (kind == "video" && !isCover && !found.hasPicture) {
            found.hasPicture = true;
            found.picture = ReadPicture(stream, start);
            found.frameRate = found.picture.averageRate;
            if (found.format == "avi")
                found.picture.end = std::max(found.picture.end, AnnouncedDuration(stream));
        }
        if (kind != "audio") continue;
        auto sound = ReadSound(stream, sounds++);
        bool const isDefault =
            stream.contains("disposition") && stream["disposition"].value("default", 0) != 0;
        if (found.hasSound && (hasDefaultSound || !isDefault)) {
            found.otherSounds.push_back(sound.description);
            continue;
        }
        if (found.hasSound) found.otherSounds.push_back(found.sound.description);
        found.hasSound = true;
        hasDefaultSound = isDefault;
        found.sound = std::move(sound);
        soundEnd = EndOf(stream, start);
    }
    found.streamDuration = std::max(found.picture.end, soundEnd);
    if (!found.hasPicture && !found.hasSound)
        RefuseMovie(
            given,
            Text("$$$/Vistrel/quillohostkit/Movie/NoStreams=it has neither picture nor sound."));
    if (auto const text = format.value("duration", ""); !text.empty()) {
        double const seconds = std::strtod(text.c_str(), nullptr);
        if (seconds > 0) found.duration = seconds;
    }
    return found;
}

}  // namespace quillohostkit
