#include "quillohostkit/ExportJob.h"

#include <QFile>
#include <utility>

#include "quillohostkit/exporting/JobState.h"
#include "quillohostkit/widgets/QtText.h"

namespace quillohostkit {

/// Ends the job when its last copy is gone.
class ExportJob::Handle {
public:
    explicit Handle(std::shared_ptr<State> newState) : state(std::move(newState)) {}
    ~Handle() {
        state->End(
            QtText("$$$/Vistrel/quillohostkit/Export/NoMovieAtEnd=The exporter has ended without a "
                   "movie."));
    }
    Handle(Handle const&) = delete;
    Handle& operator=(Handle const&) = delete;

    std::shared_ptr<State> const state;
};

ExportJob::ExportJob(std::shared_ptr<State> state)
    : handle(std::make_shared<Handle>(std::move(state))) {}

QString ExportJob::OutputFile() const {
    return QFile::decodeName(handle->state->File().c_str());
}

Asset const& ExportJob::GetAsset() const {
    return handle->state->GetAsset();
}

void ExportJob::SetProgress(double fraction) const {
    handle->state->SetProgress(fraction);
}

bool ExportJob::IsCancelled() const {
    return handle->state->IsCancelled();
}

void ExportJob::OnCancelled(std::function<void()> handler) const {
    handle->state->OnCancelled(std::move(handler));
}

void ExportJob::FinishLater() const {
    handle->state->FinishLater();
}

void ExportJob::Finish() const {
    handle->state->End({});
}

void ExportJob::Fail(QString const& reason) const {
    handle->state->End(reason.isEmpty() ? QtText("$$$/Vistrel/quillohostkit/Export/NoReason=The "
                                                 "exporter has failed without a reason.")
                                        : reason);
}

}  // namespace quillohostkit
