#pragma once

#include "quillohostkit/Export.h"
#include "quillohostkit/ExportJob.h"

namespace quillohostkit {

/// Makes the movie that is shared. Ready ones are FfmpegExporter, ProcessExporter and CopyExporter.
class QUILLOHOSTKIT_API Exporter {
public:
    /// Where Export is called.
    enum class Thread {
        Worker,  ///< on a thread of its own: it may take its time
        Main,    ///< on the main thread: it starts the export and returns (ExportJob::FinishLater)
    };

    virtual ~Exporter();

    /// Exports job.GetAsset() to job.OutputFile(), a movie that browsers play (H.264 and AAC in
    /// MP4). What it throws fails the job: the text of a std::exception is shown to the user. One
    /// call at a time, unless an export that was cancelled goes on all the same.
    virtual void Export(ExportJob& job) = 0;

    /// Worker unless it is overridden.
    [[nodiscard]] virtual Thread GetThread() const;
};

}  // namespace quillohostkit
