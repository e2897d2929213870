#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "moxcore/async/Future.h"
#include "quillohostkit/process/ChildProcess.h"

namespace quillohost::editor {

/// A movie of a few seconds to try the program with, made with ffmpeg. Main thread; destroying it
/// ends the making, and no part of the file stays behind.
class SampleClip {
public:
    /// Makes it at `file`. A Failure (Export) when ffmpeg is not installed.
    explicit SampleClip(std::filesystem::path const& file);
    ~SampleClip();
    SampleClip(SampleClip const&) = delete;
    SampleClip& operator=(SampleClip const&) = delete;

    /// Completes on the main thread with the file's name; fails with a Failure (Export).
    [[nodiscard]] moxcore::async::Future<std::filesystem::path> Result() const {
        return promise.GetFuture();
    }

private:
    void OnExit(quillohostkit::ExitStatus status);

    std::filesystem::path file;
    std::filesystem::path unfinished;
    std::string complaint;  // the last line that ffmpeg had to say
    moxcore::async::Promise<std::filesystem::path> promise;
    std::unique_ptr<quillohostkit::ChildProcess> ffmpeg;
};

}  // namespace quillohost::editor
