#pragma once

#include <QString>
#include <QWidget>

namespace moxui::backend {

/// `text` for a widget's tooltip, so that it is shown as it stands, wrapped where it is long: Qt
/// takes what looks like markup for markup, and a name may look like it.
[[nodiscard]] QString AsPlainToolTip(QString const& text);
/// The text that AsPlainToolTip was given.
[[nodiscard]] QString FromPlainToolTip(QString const& toolTip);

/// Gives `widget` a tooltip, which is shown once the pointer has rested on it for so long; none for
/// an empty text.
void SetToolTip(QWidget& widget, QString const& text, int milliseconds);

/// Shows `text`, as it stands, beside the pointer and in the theme's colours, as long as the
/// pointer is in `place` of `widget`; hides what is shown for an empty text.
void ShowToolTip(QPoint const& globalPosition, QString const& text, QWidget& widget,
                 QRect const& place);

}  // namespace moxui::backend
