#pragma once

#include <QMouseEvent>
#include <QPointer>
#include <QWidget>
#include <QWindow>

namespace moxui::backend {

/// The press by which the user comes back from another program to a window of this one: whether it
/// does anything there, or only brings the user back. Told by what Qt does with it: a press that no
/// widget takes is offered to each one's parent, up to the window.
class ReturnPress {
public:
    /// `press` falls on `window`; false when it is the one before still. Qt hands one press around,
    /// with one timestamp.
    bool Begin(QWindow& window, QMouseEvent const& press);
    [[nodiscard]] bool HasBegun() const { return begun; }

    /// Nothing that comes after this is the press's doing.
    void End() { ended = true; }
    [[nodiscard]] bool IsUnderWay() const { return begun && !ended; }

    /// The press is offered to `widget`.
    void IsOfferedTo(QWidget& widget) { offered = &widget; }
    /// `opened`, a window, is being shown.
    void HasOpened(QWidget const& opened);

    /// Whether it does something; asked once the press has been offered.
    [[nodiscard]] bool DoesSomething() const;
    /// Whether what it has opened takes the focus. A menu leaves it with its window.
    [[nodiscard]] bool GivesFocusAway() const { return givesFocusAway; }
    /// The window pressed; null once it is destroyed.
    [[nodiscard]] QWindow* GetWindow() const { return window; }

private:
    QPointer<QWindow> window;
    unsigned long at = 0;       // timestamp
    QPointer<QWidget> offered;  // the last one that it was offered to
    bool begun = false;
    bool ended = false;
    bool hasOpened = false;
    bool givesFocusAway = false;
};

}  // namespace moxui::backend
