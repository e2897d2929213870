#pragma once

#include <QString>
#include <functional>
#include <memory>

#include "quillohostkit/Asset.h"
#include "quillohostkit/Export.h"

namespace quillohostkit {

/// One export of an asset to a file. A handle: copies are the same job.
///
/// The job ends when Exporter::Export returns, or, after FinishLater, with Finish or Fail or when
/// the last copy is gone. It has succeeded when the file is there and not empty. A job that has
/// ended, or was cancelled, ignores further calls.
///
/// Any thread.
class QUILLOHOSTKIT_API ExportJob {
public:
    class State;

    /// For the kit, which makes the jobs.
    explicit ExportJob(std::shared_ptr<State> state);

    /// The file to write, ".mp4"; it does not exist, and its directory is the job's own: files
    /// beside it are deleted with it. What is written here is deleted when the job fails.
    [[nodiscard]] QString OutputFile() const;
    /// The asset, as it was when the user pressed Share.
    [[nodiscard]] Asset const& GetAsset() const;

    /// How far the export is, 0 to 1; values beyond are cut. Cheap: call it as often as you like.
    void SetProgress(double fraction) const;

    /// Whether the user has cancelled the export, or the program ends. Return, or call Finish, soon
    /// then; the result is not used.
    [[nodiscard]] bool IsCancelled() const;
    /// Calls `handler` once, on the main thread, when the job is cancelled, for an exporter that
    /// cannot poll IsCancelled. It replaces the handler before.
    void OnCancelled(std::function<void()> handler) const;

    /// The export goes on after Export has returned; keep a copy of the job.
    void FinishLater() const;
    /// The file is complete.
    void Finish() const;
    /// There will be no file. `reason` is one sentence for the user.
    void Fail(QString const& reason) const;

private:
    class Handle;
    std::shared_ptr<Handle> handle;
};

}  // namespace quillohostkit
