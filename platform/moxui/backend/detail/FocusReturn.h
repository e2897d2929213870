#pragma once

#include <QPointer>
#include <QWidget>

namespace moxui::backend {

/// Where the keyboard's focus was before a window of ours took it.
class FocusReturn {
public:
    void Remember();

    /// Gives the focus back, if `window`, or one that belongs to it, has it still: what has taken
    /// it meanwhile, another program's window for instance, keeps it. Called before `window` is
    /// hidden.
    void GiveBackFrom(QWidget& window) const;

    /// The window that had the focus; null once it is gone.
    [[nodiscard]] QWidget* Window() const { return window; }

private:
    QPointer<QWidget> window;
    QPointer<QWidget> widget;
};

/// Whether `window`, a window on the screen, is that of `owner` or was opened from there: a menu or
/// a dialog of its own.
[[nodiscard]] bool BelongsTo(QWindow const& window, QWidget const& owner);

}  // namespace moxui::backend
