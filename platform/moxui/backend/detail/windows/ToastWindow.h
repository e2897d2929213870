#pragma once

#include <QString>

#include "moxui/backend/detail/widgets/ViewWidget.h"

namespace moxui::backend {

/// The window of a toast: above all others, deaf to the pointer and the keyboard.
class ToastWindow : public ViewWidget {
    Q_OBJECT
public:
    ToastWindow();

    /// Shows `text`, as it stands, near the foot of `owner`, a window on the screen (null: of the
    /// screen), and announces it to assistive tools.
    void ShowOver(QWidget const* owner, QString const& text);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QRect TextPlace() const;

    QString text;
};

}  // namespace moxui::backend
