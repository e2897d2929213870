#pragma once

#include <QObject>
#include <QString>
#include <memory>

#include "quillohostkit/Export.h"

namespace quillohostkit {

class ShareController;

/// How sharing stands, for the host's own widgets: a controller's, which owns it. Properties may be
/// read on any thread; signals are emitted on the main thread.
class QUILLOHOSTKIT_API ShareState : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString signedInAs READ signedInAs NOTIFY changed)
    Q_PROPERTY(Phase phase READ phase NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(double progress READ progress NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY messageChanged)
    Q_PROPERTY(QString link READ link NOTIFY changed)
    Q_PROPERTY(int version READ version NOTIFY changed)
    Q_PROPERTY(bool canCancel READ canCancel NOTIFY changed)
    Q_PROPERTY(bool canShareAgain READ canShareAgain NOTIFY changed)

public:
    /// The step of the share under way.
    enum class Phase {
        Idle,       ///< nothing is being shared
        Linking,    ///< the service makes a link
        Exporting,  ///< the host's exporter works
        Uploading,
        Finishing,  ///< the movie is put on its link
    };
    Q_ENUM(Phase)

    ~ShareState() override;

    /// The user's name; empty while nobody is signed in.
    [[nodiscard]] QString signedInAs() const;
    /// Of the share under way in this process, be it another window's: one at a time goes on.
    [[nodiscard]] Phase phase() const;
    /// The name of the asset that is being shared, or was last.
    [[nodiscard]] QString title() const;
    /// How far the phase is, 0 to 1; negative when that is unknown.
    [[nodiscard]] double progress() const;
    /// The last thing to tell the user, one line: how the share goes, or why something failed.
    [[nodiscard]] QString message() const;
    /// The phase in words, with the title: "Uploading "Clip"". Empty when nothing is shared.
    [[nodiscard]] QString phaseText() const;
    /// The link of the controller's asset, once it has been shared; else empty.
    [[nodiscard]] QString link() const;
    /// How many versions of it are under the link.
    [[nodiscard]] int version() const;
    /// Whether ShareController::Cancel has an effect.
    [[nodiscard]] bool canCancel() const;
    /// Whether the popup shows the link of a share that has ended (ShareController::ShareAgain).
    [[nodiscard]] bool canShareAgain() const;

Q_SIGNALS:
    /// Any property but `message`.
    void changed();
    /// The last line for the user.
    void messageChanged(QString const& message);
    /// The controller's asset is on its link.
    void shareFinished(QString const& link, int version);
    /// The share of the controller's asset has ended without. `reason` is one sentence.
    void shareFailed(QString const& reason);

private:
    friend class ShareController;
    struct Values;

    explicit ShareState(QObject* parent);
    void Set(Values const& newValues);
    void SetMessage(QString const& newMessage);
    [[nodiscard]] bool IsObserved() const;
    [[nodiscard]] Values Get() const;

    class Guarded;
    std::unique_ptr<Guarded> guarded;
};

}  // namespace quillohostkit
