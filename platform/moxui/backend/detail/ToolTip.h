#pragma once

#include <QString>
#include <QWidget>

namespace moxui::backend {

/// `text` as a tooltip that is shown as it stands, wrapped where it is long: Qt takes what looks
/// like markup for markup, and a name may look like it.
[[nodiscard]] QString AsPlainToolTip(QString const& text);
/// The text that AsPlainToolTip was given.
[[nodiscard]] QString FromPlainToolTip(QString const& toolTip);

/// How long, in milliseconds, the pointer rests on `widget` before its tooltip is shown.
void SetToolTipDelay(QWidget& widget, int milliseconds);

}  // namespace moxui::backend
