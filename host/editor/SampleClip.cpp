#include "host/editor/SampleClip.h"

#include <sstream>
#include <system_error>
#include <vector>

#include "host/editor/SampleClipArguments.h"
#include "moxcore/config/Localizer.h"
#include "quillohostkit/media/MovieProbe.h"
#include "quillohostkit/process/Failure.h"

namespace quillohost::editor {

using moxcore::config::Text;
namespace {

std::vector<std::string> Arguments(std::filesystem::path const& output) {
    std::vector<std::string> arguments;
    std::istringstream lines(kSampleClipArguments);
    for (std::string line; std::getline(lines, line);)
        arguments.push_back(line);
    arguments.insert(arguments.end(), {"-y", quillohostkit::FfmpegFileName(output)});
    return arguments;
}

}  // namespace

SampleClip::SampleClip(std::filesystem::path const& file) : file(file), unfinished(file) {
    unfinished += ".part";
    ffmpeg = std::make_unique<quillohostkit::ChildProcess>(
        quillohostkit::FindFfmpegProgram("ffmpeg"), Arguments(unfinished),
        quillohostkit::ChildProcess::Input::Nothing,
        quillohostkit::ChildProcess::Hooks{
            .onOutput = nullptr,
            .onError = [this](auto& line) { complaint = quillohostkit::FfmpegComplaint(line); },
            .onExit = [this](auto status) { OnExit(status); }});
}

SampleClip::~SampleClip() {
    ffmpeg.reset();
    std::error_code ignored;
    std::filesystem::remove(unfinished, ignored);
}

void SampleClip::OnExit(quillohostkit::ExitStatus status) {
    std::error_code error;
    if (status.IsSuccess()) std::filesystem::rename(unfinished, file, error);
    if (status.IsSuccess() && !error) {
        promise.SetValue(file);
        return;
    }
    promise.SetException(std::make_exception_ptr(quillohostkit::Failure(
        quillohostkit::FailureKind::Export,
        Text("$$$/Vistrel/quillo-host/Sample/Cannot=Cannot make the sample clip \"{file}\" "
             "({reason}). Open a movie of yours instead.",
             {{"file", file.string()}, {"reason", error ? error.message() : complaint}}))));
}

}  // namespace quillohost::editor
