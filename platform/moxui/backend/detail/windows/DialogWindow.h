#pragma once

#include <QDialog>
#include <functional>

#include "moxui/backend/detail/focus/FocusReturn.h"
#include "moxui/backend/detail/widgets/Peer.h"

namespace moxui::backend {

/// The window of a dialog. It has no parent widget, from which it would take over the host's style
/// sheet; it lies above its parent's window as that one's transient.
class DialogWindow : public QDialog, public NodeLink {
    Q_OBJECT
public:
    explicit DialogWindow(QWidget* parentWindow);

    /// Escape or the close box was pressed; false has the dialog closed.
    std::function<bool()> onCancel;
    /// Enter was pressed, and what has the focus has no use for it.
    std::function<void()> onEnter;
    /// Heard before the dialog is shown and after it was hidden.
    std::function<void(bool shown)> onShown;

    /// Puts it over the middle of the parent's window, or of the screen.
    void Centre();

    void reject() override;
    void setVisible(bool visible) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QPointer<QWidget> parentWindow;
    FocusReturn focus;
};

}  // namespace moxui::backend
