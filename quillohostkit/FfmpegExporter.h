#pragma once

#include <QString>
#include <functional>
#include <memory>

#include "quillohostkit/Export.h"
#include "quillohostkit/Exporter.h"

namespace quillohostkit {

/// Exports a movie file with ffmpeg (the programs ffmpeg and ffprobe): H.264 and AAC in MP4,
/// without the metadata and chapters of the file. High dynamic range is mapped to BT.709,
/// interlaced pictures are deinterlaced, surround sound becomes stereo. Still pictures, playlists
/// and protected movies are refused, and so is a movie that cannot be read to its end. ffmpeg ends
/// with the host, however that ends.
class QUILLOHOSTKIT_API FfmpegExporter : public Exporter {
public:
    /// Asked for the path of the movie when the export begins, on the main thread.
    using Path = std::function<QString()>;
    /// Asked, on the main thread, whether to share the part of a damaged movie that can be read.
    /// `damage` is one sentence for the user. It may wait for the user.
    using AcceptsDamage = std::function<bool(QString const& damage)>;

    /// Exports the file at the asset's own path.
    FfmpegExporter();
    /// Exports the file at `path`, or at the asset's own path when that is empty. Without
    /// `acceptsDamage` a damaged movie is refused.
    explicit FfmpegExporter(Path path, AcceptsDamage acceptsDamage = {});

    void Export(ExportJob& job) override;
    [[nodiscard]] Thread GetThread() const override;

private:
    Path path;
    AcceptsDamage acceptsDamage;
};

}  // namespace quillohostkit
