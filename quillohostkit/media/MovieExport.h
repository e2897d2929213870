#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "moxcore/async/Future.h"
#include "moxcore/utility/LifetimeToken.h"
#include "quillohostkit/Export.h"
#include "quillohostkit/media/MovieDamage.h"
#include "quillohostkit/media/MovieProbe.h"
#include "quillohostkit/process/ChildProcess.h"

namespace quillohostkit {

struct ExportedFile {
    std::filesystem::path file;
    std::uint64_t bytes = 0;
    std::string sha256;       ///< lower-case hexadecimal
    std::string damage = {};  ///< of the movie, when it was accepted; else empty
};

/// Exports a movie to an MP4 file that browsers play: H.264 with even sides and 4:2:0 colour, AAC,
/// ready to play before it has been read whole. What the movie's file says about itself besides
/// (places, people, chapters) stays out. Sound alone gives a file with sound alone. The file stands
/// under its name only when it is complete. Main thread; destroying the exporter ends the export
/// and removes what there is of the file.
class QUILLOHOSTKIT_API MovieExport {
public:
    /// How far it is, 0 to 1; on the main thread. Not called when the movie's duration is unknown.
    using Progress = std::function<void(double)>;

    /// How to treat a movie that cannot be read to its end.
    enum class Damaged {
        Refuse,  ///< the export fails, with a DamagedMovie
        Accept,  ///< what there is of it is exported
    };

    /// A Failure (Export) when `output` is the movie itself, or ffmpeg is missing.
    MovieExport(Movie const& movie, std::filesystem::path const& output, Progress onProgress,
                Damaged damaged = Damaged::Refuse);
    ~MovieExport();
    MovieExport(MovieExport const&) = delete;
    MovieExport& operator=(MovieExport const&) = delete;

    /// Completes on the main thread; fails with a Failure (Export).
    [[nodiscard]] moxcore::async::Future<ExportedFile> Result() const {
        return promise.GetFuture();
    }

    /// Stands in the place of the output's extension while it is not complete. No longer than that:
    /// the name may be as long as names can be.
    static constexpr char const* kUnfinished = ".tmp";

private:
    void OnProgressLine(std::string const& line);
    void OnComplaint(std::string const& line);
    void OnExit(ExitStatus status);
    void Checksum();
    void Finish(ExportedFile exported);
    [[nodiscard]] std::string Complaint(ExitStatus status) const;

    Movie const movie;
    std::filesystem::path const output;
    std::filesystem::path const unfinished;
    Progress onProgress;
    Damaged const damaged;
    ReadReport readReport;
    std::string damage;
    std::deque<std::string> complaints;  // the last lines that ffmpeg had to say
    bool endIsMissing = false;           // the file could not be written to its end
    moxcore::async::Promise<ExportedFile> promise;
    moxcore::utility::LifetimeToken token;
    std::unique_ptr<ChildProcess> ffmpeg;
};

/// For the end of a failure's line: that the exported movie is kept, and where. Empty when it is
/// not.
[[nodiscard]] QUILLOHOSTKIT_API std::string WhereItIsKept(std::filesystem::path const& exported);

}  // namespace quillohostkit
