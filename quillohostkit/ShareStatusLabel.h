#pragma once

#include <QProgressBar>
#include <QToolButton>
#include <QWidget>

#include "quillohostkit/Export.h"
#include "quillohostkit/ShareController.h"

namespace quillohostkit {

class ElidedLabel;

/// For a status bar: the last message; while something is shared, what, a progress bar and Cancel.
/// Main thread.
class QUILLOHOSTKIT_API ShareStatusLabel : public QWidget {
    Q_OBJECT

public:
    /// Shows the state of `controller`, which must outlive the label.
    explicit ShareStatusLabel(ShareController* controller, QWidget* parent = nullptr);
    ~ShareStatusLabel() override;

public Q_SLOTS:
    /// Shows a line of the host's own, until the next message.
    void showMessage(QString const& line);

private:
    void Show(ShareState const& state);

    ElidedLabel* message;
    ElidedLabel* phase;
    QProgressBar* progress;
    QToolButton* cancel;
};

}  // namespace quillohostkit
