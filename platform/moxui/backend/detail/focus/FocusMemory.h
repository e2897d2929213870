#pragma once

#include <QAccessible>
#include <QWidget>

namespace moxui::backend {

/// Knows which control of a window has the keyboard's focus, or had it last, by what a user knows
/// of it, its role and its name: content that is made anew has it again under another address.
class FocusMemory {
public:
    explicit FocusMemory(QWidget& window);
    ~FocusMemory();
    FocusMemory(FocusMemory const&) = delete;
    FocusMemory& operator=(FocusMemory const&) = delete;

    /// Gives the focus to the control of that role and name; whether there is one.
    bool Restore(Qt::FocusReason reason) const;

    void Forget();

private:
    QWidget& window;
    QAccessible::Role role = QAccessible::NoRole;
    QString name;
    QMetaObject::Connection connection;
};

}  // namespace moxui::backend
