#pragma once

#include <QEvent>
#include <QWidget>

namespace moxui::backend {

// What is otherwise on Wayland, where a program neither knows nor chooses the places of its windows
// on the screen: the window system puts a popup, an xdg_popup, beside its parent's surface when it
// is shown, and moves it along with that. Elsewhere these do nothing more than Qt does.

[[nodiscard]] bool IsOnWayland();

/// Makes `window`, which is its owner's transient and about to be shown, a popup of the owner's
/// surface. It grabs nothing: one that did would vanish when another program, a browser for
/// instance, is used.
void HangFromOwner(QWidget& window);
/// The same for `menu`, if it is about to open from such a popup, in which no other may grab.
void HangFromPopup(QWidget& menu, QWidget const& opener);

/// Has what the pointer does over `window`, which is shown, go to what lies below it.
void LetInputThrough(QWidget& window);

/// Makes `window` the one that has the keyboard's focus. The window system gives it to the owner of
/// a popup, and Qt gives it on here.
void Activate(QWidget& window);

/// The same for a popup when the user comes back to the program: Qt is about to make its owner
/// active.
void ActivateOnReturn(QWidget& popup);

/// Closes the menu that is open in `popup`, when the user goes away: one that grabs nothing would
/// stay.
void CloseMenuOf(QWidget const& popup);

/// Gives a popup that is active the keys that come for its owner's window.
class KeysFromOwner {
public:
    explicit KeysFromOwner(QWidget& popup) : popup(popup) {}

    /// Whether `event`, one of a key, goes no further to `receiver`. A menu that is open gets its
    /// keys from Qt, and what closes it is nobody else's.
    [[nodiscard]] bool Filter(QObject& receiver, QEvent& event);

private:
    QWidget& popup;
    bool isForMenu = false;
};

}  // namespace moxui::backend
