#pragma once

#include <QPointer>
#include <QWidget>

namespace moxui::backend {

/// Where the keyboard's focus was before a window of ours took it.
class FocusReturn {
public:
    /// Called before `window` takes the focus; one that was hidden only just now has it still, and
    /// goes on remembering where it came from.
    void RememberFor(QWidget const& window);

    /// Forgets where it was, unless that is in `window`.
    void ForgetOutside(QWidget const& window);

    /// Forgets the widget, but not its window.
    void ForgetWidget() { widget = nullptr; }

    /// Whether `window`, or one that belongs to it, has the focus still. What has taken it
    /// meanwhile, another program's window for instance, keeps it.
    [[nodiscard]] static bool IsWith(QWidget const& window);

    /// Gives the focus back to where it was. If no window of this program had it then, as right
    /// after a click for which the window system has not yet handed it over, or if that window is
    /// no longer to be seen, the window of `otherwise` (which may be null) gets it.
    void GiveBack(QWidget* otherwise) const;

private:
    QPointer<QWidget> window;
    QPointer<QWidget> widget;
};

/// Whether `window`, a window on the screen, is that of `owner` or was opened from there: a menu or
/// a dialog of its own.
[[nodiscard]] bool BelongsTo(QWindow const& window, QWidget const& owner);

}  // namespace moxui::backend
