#pragma once

#include <QPointer>
#include <functional>

#include "moxcore/geom/Rect.h"
#include "moxui/backend/detail/focus/FocusMemory.h"
#include "moxui/backend/detail/focus/FocusReturn.h"
#include "moxui/backend/detail/widgets/ViewWidget.h"
#include "moxui/backend/detail/windows/ReturnPress.h"
#include "moxui/backend/detail/windows/Wayland.h"

namespace moxui::backend {

/// The window of a popup.
///
/// It is no Qt::Popup: on X11 these grab the mouse and the keyboard of the whole screen, and a
/// browser that comes up for a sign-in could not be used until the popup is gone. On Wayland it is
/// a popup of its anchor's surface that grabs nothing (Wayland.h). It has no parent
/// widget either, from which it would take over the host's style sheet and shortcuts; it lies above
/// its anchor's window as that one's transient.
class PopupWindow : public RootWidget {
    Q_OBJECT
public:
    explicit PopupWindow(QWidget* anchor);
    ~PopupWindow() override;

    /// Has it hang from `newAnchor`, and belong to that one's window, as if it always had. One that
    /// is shown goes along to the same place beside it. Null: it stays where it is and belongs to
    /// nothing.
    void HangFrom(QWidget* newAnchor);

    /// Heard after the user has dismissed the popup.
    std::function<void()> onDismissed;
    bool menuShowing = false;

    /// Asks for a place of the content on the screen.
    void SetContentRect(moxcore::geom::RectT<float> const& rect);
    /// Shows the popup, once there is a place for it. Called again with other content in it, puts
    /// the keyboard's focus back on the control that had it, where that is there again.
    void Start();
    /// Hides it.
    void Stop();

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* receiver, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void Dismiss();
    void TakeDown();
    void Place();
    void PlaceBesideAnchor(QRect const& place);
    void BecomeTransient();
    void Show();
    void ShowAgain();
    void TakeFocus();
    [[nodiscard]] QPoint AnchorCorner() const;
    [[nodiscard]] QRect AnchorOnScreen() const;
    void FollowAnchor();
    /// Whether the press goes no further.
    [[nodiscard]] bool HandlePress(QObject& receiver, QMouseEvent const& press);
    /// Judges the press that brought the user back once it has been handled.
    void JudgeReturnLater();
    void JudgeReturn();
    void NoteWindow(QObject const& shown);
    [[nodiscard]] bool IsBlocked() const;
    void ApplicationStateChanged(Qt::ApplicationState state);

    QPointer<QWidget> anchor;
    QMetaObject::Connection anchorGone;
    QPoint anchorCorner;  // when the place was asked for
    moxcore::geom::RectT<float> asked;
    FocusReturn focus;
    FocusMemory memory{*this};
    KeysFromOwner keys{*this};
    bool started = false;
    bool willShowAgain = false;
    bool away = false;  // the user works with another program
    ReturnPress returning;
    unsigned long menuPressAt = 0;  // timestamp of the last press that was for a menu
};

}  // namespace moxui::backend
