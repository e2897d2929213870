#include "quillohostkit/FfmpegExporter.h"

#include <QFile>
#include <exception>
#include <utility>

#include "moxcore/utility/LifetimeToken.h"
#include "quillohostkit/media/MovieExport.h"
#include "quillohostkit/media/MovieProbe.h"
#include "quillohostkit/process/OnMainThread.h"

namespace quillohostkit {
namespace {

namespace fs = std::filesystem;

/// One export: what it waits for holds it. Main thread.
class FfmpegRun : public std::enable_shared_from_this<FfmpegRun> {
public:
    FfmpegRun(ExportJob newJob, FfmpegExporter::AcceptsDamage newAcceptsDamage)
        : job(std::move(newJob)), acceptsDamage(std::move(newAcceptsDamage)) {}

    void Start(fs::path const& movie) {
        job.FinishLater();
        job.OnCancelled([self = shared_from_this()] { self->Stop(); });
        probe = std::make_unique<MovieProbe>(movie);
        OnMainThread(probe->Result(), token, [self = shared_from_this()](auto const& found) {
            self->Attempt([&] { self->Export(found.Get(), MovieExport::Damaged::Refuse); });
        });
    }

private:
    void Export(Movie const& movie, MovieExport::Damaged damaged) {
        exporting = std::make_unique<MovieExport>(
            movie, fs::path(QFile::encodeName(job.OutputFile()).toStdString()),
            [this](double fraction) { job.SetProgress(fraction); }, damaged);
        OnMainThread(exporting->Result(), token,
                     [self = shared_from_this(), movie](auto const& exported) {
                         self->Attempt([&] { self->TakeResult(movie, exported); });
                     });
    }

    void TakeResult(Movie const& movie, moxcore::async::Future<ExportedFile> const& exported) {
        exporting.reset();
        try {
            static_cast<void>(exported.Get());
        } catch (DamagedMovie const& refused) {
            if (!acceptsDamage || !acceptsDamage(QString::fromStdString(refused.what()))) throw;
            // It may have been cancelled while the user was asked.
            if (!job.IsCancelled()) Export(movie, MovieExport::Damaged::Accept);
            return;
        }
        job.Finish();
    }

    /// Whatever `step` throws ends the job.
    template <class Step>
    void Attempt(Step step) {
        try {
            step();
        } catch (std::exception const& exception) {
            job.Fail(QString::fromStdString(exception.what()));
        }
    }

    void Stop() {
        token.Reset();
        probe.reset();
        exporting.reset();
    }

    ExportJob const job;
    FfmpegExporter::AcceptsDamage const acceptsDamage;
    std::unique_ptr<MovieProbe> probe;
    std::unique_ptr<MovieExport> exporting;
    moxcore::utility::LifetimeToken token;
};

}  // namespace

FfmpegExporter::FfmpegExporter() = default;

FfmpegExporter::FfmpegExporter(Path newPath, AcceptsDamage newAcceptsDamage)
    : path(std::move(newPath)), acceptsDamage(std::move(newAcceptsDamage)) {}

void FfmpegExporter::Export(ExportJob& job) {
    auto const movie = path ? path() : job.GetAsset().path;
    std::make_shared<FfmpegRun>(job, acceptsDamage)
        ->Start(fs::path(QFile::encodeName(movie).toStdString()));
}

Exporter::Thread FfmpegExporter::GetThread() const {
    return Thread::Main;
}

}  // namespace quillohostkit
