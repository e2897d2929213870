#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>

#include "quillohostkit/Exporter.h"
#include "quillohostkit/exporting/JobState.h"

namespace quillohostkit {

/// Runs an exporter for one job. Main thread.
class ExportRun {
public:
    /// Calls the exporter: here, or on a thread of its own. The movie stands at `output` when
    /// `onEnd` is called without a failure. A Failure (Export) when there is no place for it.
    ExportRun(std::shared_ptr<Exporter> exporter, Asset const& asset,
              std::filesystem::path const& output, ExportJob::State::Hooks hooks);

    /// Cancels the job unless it has ended. The exporter may go on for a while; nobody waits.
    ~ExportRun();
    ExportRun(ExportRun const&) = delete;
    ExportRun& operator=(ExportRun const&) = delete;

    /// Waits until no exporter is on a thread any more; false when that takes longer.
    [[nodiscard]] static bool AwaitExporters(std::chrono::milliseconds patience);

private:
    std::shared_ptr<ExportJob::State> state;
};

}  // namespace quillohostkit
