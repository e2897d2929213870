#include "quillohostkit/media/MovieExport.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <string_view>
#include <system_error>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxcore/threads/AsyncExecutor.h"
#include "quillohostkit/media/ExportSettings.h"
#include "quillohostkit/media/FileChecksum.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/process/FileFailures.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kKeptComplaints = 3;

std::vector<std::string> Arguments(Movie const& movie, fs::path const& output,
                                   MovieExport::Damaged damaged) {
    std::vector<std::string> arguments{"-nostdin", "-hide_banner", "-loglevel", "error",
                                       "-y",       "-progress",    "pipe:1"};
    auto const input = FfmpegMovieInput(movie.format);
    arguments.insert(arguments.end(), input.begin(), input.end());
    // The readable part of a damaged movie is not followed by a held picture.
    auto const settings =
        ExportSettings(movie, damaged == MovieExport::Damaged::Accept ? LastPicture::AsRead
                                                                      : LastPicture::AsProbed);
    arguments.insert(arguments.end(), settings.begin(), settings.end());
    for (char const* const word : {"-map_metadata", "-1", "-map_chapters", "-1", "-movflags",
                                   "+faststart", "-abort_on", "empty_output", "-f", "mp4"})
        arguments.emplace_back(word);
    arguments.push_back(FfmpegFileName(output));
    return arguments;
}

fs::path WithExtension(fs::path path, char const* extension) {
    return path.replace_extension(extension);
}

Movie const& NotAt(fs::path const& output, Movie const& movie) {
    if (!movie.opened->IsAt(output)) return movie;
    throw Failure(
        FailureKind::Export,
        Text("$$$/Vistrel/quillohostkit/Export/OntoItself=The movie lies where it would be "
             "exported to, \"{file}\"; move it, or share it under another name (--name).",
             {{"file", movie.file.string()}}));
}

}  // namespace

MovieExport::MovieExport(Movie const& movie, fs::path const& output, Progress onProgress,
                         Damaged damaged)
    : movie(NotAt(output, movie)),
      output(output),
      unfinished(WithExtension(output, kUnfinished)),
      onProgress(std::move(onProgress)),
      damaged(damaged),
      ffmpeg(std::make_unique<ChildProcess>(
          FindFfmpegProgram("ffmpeg"), Arguments(movie, unfinished, damaged),
          movie.opened->Number(),
          ChildProcess::Hooks{.onOutput = [this](auto& line) { OnProgressLine(line); },
                              .onError = [this](auto& line) { OnComplaint(line); },
                              .onExit = [this](auto status) { OnExit(status); }})) {}

MovieExport::~MovieExport() {
    ffmpeg.reset();
    std::error_code ignored;
    fs::remove(unfinished, ignored);
}

void MovieExport::OnProgressLine(std::string const& line) {
    constexpr std::string_view kTime = "out_time_us=";  // of the export; "N/A" at first
    if (!line.starts_with(kTime)) return;
    double microseconds = 0;
    auto const [rest, error] =
        std::from_chars(line.data() + kTime.size(), line.data() + line.size(), microseconds);
    if (error != std::errc()) return;
    readReport.SetSeconds(microseconds / 1e6);
    if (movie.duration) onProgress(std::clamp(microseconds / 1e6 / *movie.duration, 0.0, 1.0));
}

void MovieExport::OnComplaint(std::string const& line) {
    // ffmpeg 5 counts an export as a success even when these last steps fail.
    endIsMissing |=
        line.starts_with("Error writing trailer") || line.starts_with("Error closing file");
    readReport.AddComplaint(line);
    complaints.push_back(FfmpegComplaint(line));
    if (complaints.size() > kKeptComplaints) complaints.pop_front();
}

void MovieExport::OnExit(ExitStatus status) {
    if (status.IsSuccess() && !endIsMissing) {
        damage = readReport.FindDamage(movie).value_or("");
        if (damage.empty() || damaged == Damaged::Accept) return Checksum();
        promise.SetException(std::make_exception_ptr(DamagedMovie(movie, damage)));
        return;
    }
    promise.SetException(std::make_exception_ptr(
        Failure(FailureKind::Export,
                Text("$$$/Vistrel/quillohostkit/Export/Cannot=Cannot export \"{file}\": {reason}",
                     {{"file", movie.file.string()}, {"reason", Complaint(status)}}))));
}

std::string MovieExport::Complaint(ExitStatus status) const {
    std::string said;
    for (auto const& line : complaints) {
        if (line.find(std::generic_category().message(ENOSPC)) != std::string::npos)
            return Text(
                "$$$/Vistrel/quillohostkit/Export/DiskFull=the disk of \"{file}\" is full; free "
                "some space and share again.",
                {{"file", output.parent_path().string()}});
        said += (said.empty() ? "" : "; ") + line;
    }
    if (status.signal != 0)
        return WithFfmpegsWords(
            Text("$$$/Vistrel/quillohostkit/Export/FfmpegKilled=the system ended ffmpeg, which "
                 "exports it (signal {number}); close other programs, free some disk space and "
                 "share again",
                 {{"number", std::to_string(status.signal)}}),
            said);
    return ExplainComplaint(said);
}

void MovieExport::Checksum() {
    auto const finish = [hand = token.Guard([this](auto const& result) {
        result(*this);
    })](auto result) { moxcore::threads::AsyncCallFromMainThread([=] { hand(result); }, 0); };
    moxcore::threads::GetIOBoundExecutor()->CallAsync([finish, file = unfinished] {
        try {
            ExportedFile exported{
                .file = {}, .bytes = fs::file_size(file), .sha256 = Sha256OfFile(file)};
            finish([exported](MovieExport& exporter) { exporter.Finish(exported); });
        } catch (...) {
            finish([error = std::current_exception()](MovieExport& exporter) {
                exporter.promise.SetException(error);
            });
        }
    });
}

void MovieExport::Finish(ExportedFile exported) {
    std::error_code error;
    fs::rename(unfinished, output, error);
    if (error) {
        promise.SetException(std::make_exception_ptr(
            Failure(FailureKind::Export,
                    Text(kCannotWrite, {{"file", output.string()}, {"reason", error.message()}}))));
        return;
    }
    exported.file = output;
    exported.damage = damage;
    promise.SetValue(std::move(exported));
}

std::string WhereItIsKept(fs::path const& exported) {
    std::error_code error;
    if (!fs::exists(exported, error)) return "";
    return Text("$$$/Vistrel/quillohostkit/Export/Kept= The exported movie is kept: \"{file}\".",
                {{"file", exported.string()}});
}

}  // namespace quillohostkit
