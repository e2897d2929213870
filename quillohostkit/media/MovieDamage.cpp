#include "quillohostkit/media/MovieDamage.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "moxcore/config/Localizer.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

std::string WhatToDo() {
    return Text(
        "$$$/Vistrel/quillohostkit/Movie/Advice=copy it again, or export it again from the program "
        "that made it");
}

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
        return Text("$$$/Vistrel/quillohostkit/Damage/Cut=only {read} of {length} could be read",
                    {{"read", FormatLength(seconds)}, {"length", FormatLength(*length)}});
    double const pieces = *length * movie.frameRate.value_or(kSoundPiecesPerSecond);
    if (lostPieces > kFewPieces + kLostShare * pieces)
        return Text(
            "$$$/Vistrel/quillohostkit/Damage/Parts=parts of its picture or sound could not be "
            "read");
    return std::nullopt;
}

DamagedMovie::DamagedMovie(Movie const& movie, std::string const& damage)
    : Failure(
          FailureKind::Export,
          Text("$$$/Vistrel/quillohostkit/Damage/Movie=\"{file}\" is damaged: {damage}; {advice}.",
               {{"file", movie.file.string()}, {"damage", damage}, {"advice", WhatToDo()}})) {}

std::string WithFfmpegsWords(std::string const& meaning, std::string const& words) {
    return Text(words.empty()
                    ? "$$$/Vistrel/quillohostkit/Complaint/Plain={meaning}."
                    : "$$$/Vistrel/quillohostkit/Complaint/Says={meaning} (ffmpeg says: {words}).",
                {{"meaning", meaning}, {"words", words}});
}

std::string ExplainComplaint(std::string const& complaint) {
    static constexpr char kCutShort[] =
        "$$$/Vistrel/quillohostkit/Complaint/CutShort=its file is cut short; {advice}";
    static constexpr char kCoding[] =
        "$$$/Vistrel/quillohostkit/Complaint/Coding=its picture or sound is in a coding that is "
        "not supported; export it as H.264 with AAC";
    static constexpr char kNoEncoder[] =
        "$$$/Vistrel/quillohostkit/Complaint/NoEncoder=this ffmpeg cannot write H.264 or AAC; "
        "install the package ffmpeg";
    static constexpr char kNoMovie[] =
        "$$$/Vistrel/quillohostkit/Complaint/NoMovie=its content is no movie, or is damaged; "
        "{advice}";
    struct Row {
        char const* said;
        char const* meaning;
    };
    static constexpr Row rows[] = {
        {"moov atom not found",
         "$$$/Vistrel/quillohostkit/Complaint/Unfinished=the recording was not finished, or its "
         "copy was cut short; {advice}"},
        {"ended prematurely", kCutShort},
        {"partial file", kCutShort},
        {"No space left on device",
         "$$$/Vistrel/quillohostkit/Complaint/DiskFull=the disk is full; free some space and share "
         "again"},
        {"File too large",
         "$$$/Vistrel/quillohostkit/Complaint/TooLarge=the export is larger than a file may be "
         "here; free some space and share again"},
        {"Cannot allocate memory",
         "$$$/Vistrel/quillohostkit/Complaint/Memory=there is not enough memory; close other "
         "programs and share again"},
        {"Permission denied",
         "$$$/Vistrel/quillohostkit/Complaint/Permission=the file may not be read or written; "
         "change its permissions"},
        {"could not find codec parameters", kCoding},
        {"Unsupported codec", kCoding},
        {"Decoder not found", kCoding},
        {"not found for input stream", kCoding},
        {"Encoder not found", kNoEncoder},
        {"Unknown encoder", kNoEncoder},
        {"Invalid data found", kNoMovie},
        {"EBML header parsing failed", kNoMovie},
    };
    char const* meaning =
        "$$$/Vistrel/quillohostkit/Complaint/Unknown=it could not be read; {advice}";
    for (auto const& row : rows)
        if (Contains(complaint, row.said)) {
            meaning = row.meaning;
            break;
        }
    return WithFfmpegsWords(Text(meaning, {{"advice", WhatToDo()}}), complaint);
}

}  // namespace quillohostkit
