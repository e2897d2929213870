#include "quillohostkit/media/MovieDamage.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace quillohostkit {
namespace {

constexpr char kWhatToDo[] = "copy it again, or export it again from the program that made it";

constexpr double kLeastCut = 0.1;  // seconds
/// Without a complaint of ffmpeg the announced length has to be missed by more: programs round it.
constexpr double kLeastSilentCut = 1;  // seconds
/// By how many pictures ffmpeg's last word on its progress may be behind.
constexpr double kPicturesBehind = 4;
constexpr double kLostShare = 0.02;
/// How many pieces a healthy recording may lose: those before its first whole picture.
constexpr double kFewPieces = 10;
constexpr double kSoundPiecesPerSecond = 40;

bool Contains(std::string const& text, char const* part) {
    return text.find(part) != std::string::npos;
}

/// Whether ffmpeg reads a file of this format up to where it is cut without a complaint, while its
/// head still announces the whole length. In other formats the length may be a guess, or include a
/// last picture that is held.
bool IsCutSilently(std::string const& format) {
    for (char const* const one : {"aiff", "avi", "flac", "flv"})
        if (format == one) return true;
    return false;
}

/// "1:02:03", or "0:31".
std::string FormatLength(double seconds) {
    auto const whole = static_cast<long>(std::floor(seconds));
    char text[32];
    if (whole >= 3600)
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    else
        std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    return text;
}

}  // namespace

void ReadReport::AddComplaint(std::string const& line) {
    hasEndedEarly |= Contains(line, "partial file") || Contains(line, "ended prematurely") ||
                     Contains(line, "Truncat");
    lostPieces += Contains(line, "Error while decoding stream") ? 1 : 0;
}

std::optional<std::string> ReadReport::FindDamage(Movie const& movie) const {
    auto const length = movie.streamDuration ? movie.streamDuration : movie.duration;
    if (!length) return std::nullopt;
    double const behind = movie.frameRate ? kPicturesBehind / *movie.frameRate : 0;
    double const leastCut = std::max(hasEndedEarly ? kLeastCut : kLeastSilentCut, behind);
    if ((hasEndedEarly || IsCutSilently(movie.format)) && *length - seconds > leastCut)
        return "only " + FormatLength(seconds) + " of " + FormatLength(*length) + " could be read";
    double const pieces = *length * movie.frameRate.value_or(kSoundPiecesPerSecond);
    if (lostPieces > kFewPieces + kLostShare * pieces)
        return "parts of its picture or sound could not be read";
    return std::nullopt;
}

DamagedMovie::DamagedMovie(Movie const& movie, std::string const& damage)
    : Failure(FailureKind::Export,
              "\"" + movie.file.string() + "\" is damaged: " + damage + "; " + kWhatToDo + ".") {}

std::string ExplainComplaint(std::string const& complaint) {
    struct Row {
        char const* said;
        std::string meaning;
    };
    static Row const rows[] = {
        {"moov atom not found",
         std::string("the recording was not finished, or its copy was cut short; ") + kWhatToDo},
        {"ended prematurely", std::string("its file is cut short; ") + kWhatToDo},
        {"partial file", std::string("its file is cut short; ") + kWhatToDo},
        {"No space left on device", "the disk is full; free some space and share again"},
        {"File too large",
         "the export is larger than a file may be here; free some space and share again"},
        {"Cannot allocate memory",
         "there is not enough memory; close other programs and share again"},
        {"Permission denied", "the file may not be read or written; change its permissions"},
        {"could not find codec parameters",
         "its picture or sound is in a coding that is not supported; export it as H.264 with AAC"},
        {"Unsupported codec",
         "its picture or sound is in a coding that is not supported; export it as H.264 with AAC"},
        {"Decoder not found",
         "its picture or sound is in a coding that is not supported; export it as H.264 with AAC"},
        {"not found for input stream",
         "its picture or sound is in a coding that is not supported; export it as H.264 with AAC"},
        {"Encoder not found", "this ffmpeg cannot write H.264 or AAC; install the package ffmpeg"},
        {"Unknown encoder", "this ffmpeg cannot write H.264 or AAC; install the package ffmpeg"},
        {"Invalid data found", std::string("its content is no movie, or is damaged; ") + kWhatToDo},
        {"EBML header parsing failed",
         std::string("its content is no movie, or is damaged; ") + kWhatToDo},
    };
    std::string meaning = std::string("it could not be read; ") + kWhatToDo;
    for (auto const& row : rows)
        if (Contains(complaint, row.said)) {
            meaning = row.meaning;
            break;
        }
    return meaning + (complaint.empty() ? "" : " (ffmpeg says: " + complaint + ")") + ".";
}

}  // namespace quillohostkit
