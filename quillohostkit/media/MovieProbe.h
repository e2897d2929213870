#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "moxcore/async/Future.h"
#include "quillohostkit/Export.h"
#include "quillohostkit/media/MovieFile.h"
#include "quillohostkit/process/ChildProcess.h"

namespace quillohostkit {

/// A movie's picture, in ffprobe's words; what its file does not tell is empty.
struct Picture {
    int height = 0;  ///< in lines
    std::string pixelFormat;
    std::string range;
    std::string matrix;
    std::string primaries;
    std::string transfer;
    std::optional<double> averageRate;  ///< pictures in a second
    std::string nominalRate;            ///< the rate that the file claims, as "30000/1001"
    std::optional<double> end;          ///< in seconds from the movie's start
};

/// The sound track that is exported: the file's default one, or else the first.
struct Sound {
    int number = 0;  ///< among the sound tracks
    int channels = 0;
    std::string description;  ///< its title or language, for the user
};

/// A movie that can be exported. At least one of picture and sound is there.
struct Movie {
    std::filesystem::path file;       ///< canonical
    std::optional<double> duration;   ///< in seconds; none when its file does not tell
    std::optional<double> frameRate;  ///< pictures in a second; none when its file does not tell
    bool hasPicture = false;
    bool hasSound = false;
    std::shared_ptr<MovieFile const> opened = nullptr;  ///< what was probed
    std::string format = {};  ///< what ffmpeg calls the format that was found
    Picture picture = {};
    Sound sound = {};
    std::vector<std::string> otherSounds = {};  ///< described, as the one that is exported is
    std::optional<double> streamDuration = {};  ///< until what is exported ends, in seconds
};

/// Where the program `name`, which is part of ffmpeg, is. A Failure (Export) when it is not
/// installed.
[[nodiscard]] QUILLOHOSTKIT_API std::filesystem::path FindFfmpegProgram(std::string const& name);

/// `path` as an argument of ffmpeg and ffprobe: a file whatever its name looks like.
[[nodiscard]] QUILLOHOSTKIT_API std::string FfmpegFileName(std::filesystem::path const& path);

/// The options and the name with which ffmpeg reads a movie of this format that is its standard
/// input, and no other file.
[[nodiscard]] QUILLOHOSTKIT_API std::vector<std::string> FfmpegMovieInput(
    std::string const& format);

/// `line`, of what ffmpeg or ffprobe said of such a movie, without the names before it.
[[nodiscard]] QUILLOHOSTKIT_API std::string FfmpegComplaint(std::string const& line);

/// Opens a file and looks into it to tell whether it is a movie: in one of the formats that hold
/// pictures and sound themselves, never in one that names other files. Main thread; destroying it
/// ends the search.
class QUILLOHOSTKIT_API MovieProbe {
public:
    /// A Failure (Export) at once when `path` is no file that can be read.
    explicit MovieProbe(std::filesystem::path const& path);

    /// The canonical path of the file.
    [[nodiscard]] std::filesystem::path const& File() const { return movie.file; }

    /// Completes on the main thread; fails with a Failure (Export) when the file is no movie.
    [[nodiscard]] moxcore::async::Future<Movie> Result() const { return promise.GetFuture(); }

private:
    void OnComplaint(std::string const& line);
    void OnExit(ExitStatus status);
    [[nodiscard]] Movie ReadReport() const;

    std::filesystem::path given;
    Movie movie;
    std::string report;            // ffprobe's, JSON
    std::string complaint;         // the last line that ffprobe had to say
    bool isOfOtherFormat = false;  // one that is not looked into
    moxcore::async::Promise<Movie> promise;
    std::unique_ptr<ChildProcess> ffprobe;
};

}  // namespace quillohostkit
