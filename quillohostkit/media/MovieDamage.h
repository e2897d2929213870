#pragma once

#include <optional>
#include <string>

#include "quillohostkit/Export.h"
#include "quillohostkit/media/MovieProbe.h"
#include "quillohostkit/process/Failure.h"

namespace quillohostkit {

/// The result of reading a movie to its end with ffmpeg.
class ReadReport {
public:
    /// A line of what ffmpeg complains of.
    void AddComplaint(std::string const& line);
    /// How far the export has come, in seconds.
    void SetSeconds(double newSeconds) { seconds = newSeconds; }

    /// The damage in words for the user: how much of the movie could be read; none when it was
    /// read to its end. A movie whose file does not tell how long it is, and a single complaint,
    /// are no reason: a recording may begin in the middle of something.
    [[nodiscard]] std::optional<std::string> FindDamage(Movie const& movie) const;

private:
    double seconds = 0;
    bool hasEndedEarly = false;  // the file ends before what it announces
    int lostPieces = 0;          // packets that could not be decoded
};

/// A movie that cannot be read to its end. What there is of it can be shared all the same.
class QUILLOHOSTKIT_API DamagedMovie : public Failure {
public:
    DamagedMovie(Movie const& movie, std::string const& damage);
};

/// The sentence that `meaning` is, with what ffmpeg has said, if anything, in parentheses.
[[nodiscard]] std::string WithFfmpegsWords(std::string const& meaning, std::string const& words);

/// Explains in plain words what is wrong with a movie and what to do, where `complaint` is a known
/// message of ffmpeg; else a general sentence. ffmpeg's own words follow in
/// parentheses.
[[nodiscard]] QUILLOHOSTKIT_API std::string ExplainComplaint(std::string const& complaint);

}  // namespace quillohostkit
