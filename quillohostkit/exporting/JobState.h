#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "quillohostkit/ExportJob.h"
#include "quillohostkit/exporting/ExportDirectory.h"

namespace quillohostkit {

/// What the copies of a job share. Any thread.
class ExportJob::State : public std::enable_shared_from_this<State> {
public:
    /// Called on the main thread, neither after the job's end nor after Cancel.
    struct Hooks {
        std::function<void(double fraction)> onProgress;
        std::function<void(QString const& failure)>
            onEnd;  ///< once; empty: the file is at the output
    };

    State(Asset asset, std::filesystem::path const& output, Hooks hooks);

    [[nodiscard]] Asset const& GetAsset() const { return asset; }
    [[nodiscard]] std::filesystem::path File() const { return directory.File(); }

    void SetProgress(double fraction);
    [[nodiscard]] bool IsCancelled() const;
    void OnCancelled(std::function<void()> handler);
    void FinishLater();
    [[nodiscard]] bool IsForLater() const;
    void End(QString const& failure);

    /// Main thread.
    void Cancel();

private:
    void TellProgress();
    void TellEnd(QString const& failure);

    Asset const asset;
    ExportDirectory const directory;
    Hooks const hooks;
    mutable std::mutex mutex;
    // Guarded by mutex.
    bool isCancelled = false;
    bool isEnded = false;
    bool isForLater = false;
    bool isProgressOnItsWay = false;
    double progress = 0;
    std::function<void()> cancelHandler;
};

}  // namespace quillohostkit
