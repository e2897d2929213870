#include "quillohostkit/exporting/ExportRun.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "moxcore/utility/NoDestructor.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

/// Counts the exporters that are on a thread. Any thread.
class Workers {
public:
    void Begin() {
        std::lock_guard lock(mutex);
        ++count;
    }
    void End() {
        std::lock_guard lock(mutex);
        --count;
        changed.notify_all();
    }
    [[nodiscard]] bool Await(std::chrono::milliseconds patience) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, patience, [this] { return count == 0; });
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    int count = 0;  // guarded by mutex
};

/// Never destroyed: an exporter may outlast the main function.
Workers& TheWorkers() {
    static moxcore::utility::NoDestructor<Workers> workers;
    return *workers;
}

/// Calls the exporter; whatever it throws is the job's failure.
void CallExporter(Exporter& exporter, ExportJob::State& state, ExportJob& job) {
    try {
        exporter.Export(job);
        if (!state.IsForLater()) job.Finish();
    } catch (std::exception const& exception) {
        job.Fail(QString::fromUtf8(exception.what()));
    } catch (...) {
        job.Fail(
            QString::fromStdString(Text("$$$/Vistrel/quillohostkit/Export/Unknown=The exporter has "
                                        "failed for an unknown reason.")));
    }
}

}  // namespace

Exporter::~Exporter() = default;

Exporter::Thread Exporter::GetThread() const {
    return Thread::Worker;
}

ExportRun::ExportRun(std::shared_ptr<Exporter> exporter, Asset const& asset,
                     std::filesystem::path const& output, ExportJob::State::Hooks hooks)
    : state(std::make_shared<ExportJob::State>(asset, output, std::move(hooks))) {
    ExportJob job(state);
    if (exporter->GetThread() == Exporter::Thread::Main) {
        CallExporter(*exporter, *state, job);
        return;
    }
    TheWorkers().Begin();
    std::thread([exporter = std::move(exporter), running = state, job]() mutable {
        CallExporter(*exporter, *running, job);
        exporter.reset();  // before the main thread sees the end of the export
        running.reset();
        { ExportJob const last = std::move(job); }
        TheWorkers().End();
    }).detach();
}

ExportRun::~ExportRun() {
    state->Cancel();
}

bool ExportRun::AwaitExporters(std::chrono::milliseconds patience) {
    return TheWorkers().Await(patience);
}

}  // namespace quillohostkit
