#include "host/editor/FrameReader.h"

#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <QProcess>
#include <optional>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/media/MovieDamage.h"
#include "quillohostkit/process/Signals.h"

namespace quillohost::editor {

using moxcore::config::Text;
namespace {

QStringList Arguments(FrameReader::Request const& request) {
    auto const fit =
        QStringLiteral("scale=iw*sar:ih,scale=%1:%2:force_original_aspect_ratio=decrease,setsar=1")
            .arg(request.bounds.width())
            .arg(request.bounds.height());
    QStringList arguments{"-nostdin", "-hide_banner", "-loglevel",
                          "error",    "-ss",          QString::number(request.seconds, 'f', 6)};
    for (auto const& word : quillohostkit::FfmpegMovieInput(request.movie.format))
        arguments.append(QString::fromStdString(word));
    return arguments + QStringList{"-map", "0:V:0",      "-frames:v", "1",   "-vf",   fit,
                                   "-f",   "image2pipe", "-c:v",      "ppm", "pipe:1"};
}

/// In the new process, before it becomes the program: it ends with the host, takes the signals that
/// the host has blocked for itself, and reads the open file `input`.
void PrepareChild(int input) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(input, STDIN_FILENO);
    quillohostkit::GiveSignalsBack();
}

}  // namespace

/// Lives on the reading thread.
class FrameReader::Worker : public QObject {
public:
    Worker(FrameReader& reader, std::filesystem::path const& ffmpeg) : reader(reader) {
        process.setParent(this);
        process.setProgram(QString::fromStdString(ffmpeg.string()));
        connect(&process, &QProcess::finished, this, [this] { OnFinished(); });
        connect(&process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart) OnFinished();
        });
    }

    ~Worker() override {
        process.disconnect(this);
        process.kill();
        process.waitForFinished();
    }

    void Ask(Request const& request) {
        next = request;
        if (process.state() == QProcess::NotRunning) Begin();
    }

private:
    void Begin() {
        current = *std::exchange(next, std::nullopt);
        process.setArguments(Arguments(current));
        process.setChildProcessModifier(
            [input = current.movie.opened->Number()] { PrepareChild(input); });
        process.start(QIODevice::ReadOnly);
    }

    void OnFinished() {
        auto const frame = QImage::fromData(process.readAllStandardOutput(), "PPM")
                               .convertToFormat(QImage::Format_RGB32);
        auto const said = process.readAllStandardError().split('\n').front().toStdString();
        QMetaObject::invokeMethod(&reader, [&to = reader, frame, said, request = current] {
            if (!frame.isNull()) return to.hooks.onFrame(frame, request);
            to.hooks.onFailure(Text(
                "$$$/Vistrel/quillo-host/Player/NoPicture=Cannot show a picture of \"{file}\": "
                "{reason}",
                {{"file", request.movie.file.string()},
                 {"reason",
                  said.empty()
                      ? Text("$$$/Vistrel/quillo-host/Player/NoneHere=there is none here.")
                      : quillohostkit::ExplainComplaint(quillohostkit::FfmpegComplaint(said))}}));
        });
        if (next) Begin();
    }

    FrameReader& reader;
    QProcess process;
    Request current;
    std::optional<Request> next;
};

FrameReader::FrameReader(Hooks newHooks)
    : hooks(std::move(newHooks)),
      worker(new Worker(*this, quillohostkit::FindFfmpegProgram("ffmpeg"))) {
    worker->moveToThread(&thread);
    connect(&thread, &QThread::finished, worker, &QObject::deleteLater);
    thread.setObjectName("frames");
    thread.start();
}

FrameReader::~FrameReader() {
    thread.quit();
    thread.wait();
}

void FrameReader::Read(Request const& request) {
    QMetaObject::invokeMethod(worker, [to = worker, request] { to->Ask(request); });
}

}  // namespace quillohost::editor
