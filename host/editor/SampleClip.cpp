#include "host/editor/SampleClip.h"

#include <sstream>
#include <system_error>
#include <vector>

#include "host/editor/SampleClipArguments.h"
#include "host/media/MovieProbe.h"
#include "host/process/Failure.h"

namespace quillohost::editor {
namespace {

std::vector<std::string> Arguments(std::filesystem::path const& output) {
    std::vector<std::string> arguments;
    std::istringstream lines(kSampleClipArguments);
    for (std::string line; std::getline(lines, line);)
        arguments.push_back(line);
    arguments.insert(arguments.end(), {"-y", FfmpegFileName(output)});
    return arguments;
}

}  // namespace

SampleClip::SampleClip(std::filesystem::path const& file) : file(file), unfinished(file) {
    unfinished += ".part";
    ffmpeg = std::make_unique<ChildProcess>(
        FindFfmpegProgram("ffmpeg"), Arguments(unfinished), ChildProcess::Input::Nothing,
        ChildProcess::Hooks{.onOutput = nullptr,
                            .onError = [this](auto& line) { complaint = FfmpegComplaint(line); },
                            .onExit = [this](auto status) { OnExit(status); }});
}

SampleClip::~SampleClip() {
    ffmpeg.reset();
    std::error_code ignored;
    std::filesystem::remove(unfinished, ignored);
}

void SampleClip::OnExit(ExitStatus status) {
    std::error_code error;
    if (status.IsSuccess()) std::filesystem::rename(unfinished, file, error);
    if (status.IsSuccess() && !error) {
        promise.SetValue(file);
        return;
    }
    promise.SetException(std::make_exception_ptr(
        Failure(ExitCode::Export, "Cannot make the sample clip \"" + file.string() + "\" (" +
                                      (error ? error.message() : complaint) +
                                      "). Open a movie of yours instead.")));
}

}  // namespace quillohost::editor
