#include "quillohostkit/ShareState.h"

#include <mutex>
#include <utility>

#include "quillohostkit/sharing/StateValues.h"
#include "quillohostkit/widgets/QtText.h"

namespace quillohostkit {

/// Read on any thread.
class ShareState::Guarded {
public:
    mutable std::mutex mutex;
    Values values;    // guarded by mutex
    QString message;  // guarded by mutex
};

ShareState::ShareState(QObject* parent) : QObject(parent), guarded(new Guarded) {}

ShareState::~ShareState() = default;

ShareState::Values ShareState::Get() const {
    std::lock_guard lock(guarded->mutex);
    return guarded->values;
}

QString ShareState::signedInAs() const {
    return Get().signedInAs;
}

ShareState::Phase ShareState::phase() const {
    return Get().phase;
}

QString ShareState::title() const {
    return Get().title;
}

double ShareState::progress() const {
    return Get().progress;
}

QString ShareState::message() const {
    std::lock_guard lock(guarded->mutex);
    return guarded->message;
}

QString ShareState::phaseText() const {
    auto const now = Get();
    auto const named = [&now](char const* keyAndDefault) {
        return QtText(keyAndDefault, {{"title", now.title.toStdString()}});
    };
    switch (now.phase) {
        case Phase::Idle:
            break;
        case Phase::Linking:
            return named("$$$/Vistrel/quillohostkit/Phase/Linking=Making a link for \"{title}\"");
        case Phase::Exporting:
            return named("$$$/Vistrel/quillohostkit/Phase/Exporting=Exporting \"{title}\"");
        case Phase::Uploading:
            return named("$$$/Vistrel/quillohostkit/Phase/Uploading=Uploading \"{title}\"");
        case Phase::Finishing:
            return named("$$$/Vistrel/quillohostkit/Phase/Finishing=Finishing \"{title}\"");
    }
    return {};
}

QString ShareState::link() const {
    return Get().link;
}

int ShareState::version() const {
    return Get().version;
}

bool ShareState::canCancel() const {
    return Get().canCancel;
}

bool ShareState::canShareAgain() const {
    return Get().canShareAgain;
}

void ShareState::Set(Values const& newValues) {
    {
        std::lock_guard lock(guarded->mutex);
        if (guarded->values == newValues) return;
        guarded->values = newValues;
    }
    Q_EMIT changed();
}

void ShareState::SetMessage(QString const& newMessage) {
    {
        std::lock_guard lock(guarded->mutex);
        guarded->message = newMessage;
    }
    Q_EMIT messageChanged(newMessage);
}

bool ShareState::IsObserved() const {
    return receivers(SIGNAL(messageChanged(QString))) > 0 ||
           receivers(SIGNAL(shareFailed(QString))) > 0;
}

}  // namespace quillohostkit
