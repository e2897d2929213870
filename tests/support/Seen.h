#pragma once

#include <QImage>
#include <QString>
#include <QWidget>
#include <string>

#include "moxui/controls/UI_PictureSupplyMessage.h"

namespace testsupport {

/// The smallest rectangle that holds every pixel of `picture` that is not as its first.
[[nodiscard]] QRect InkOf(QImage const& picture);

/// What a pointer that rests on `widget` is told; "" when nothing is.
[[nodiscard]] QString ToolTipOver(QWidget& widget);

/// Supplies the toolkit's own picture `name`.
[[nodiscard]] moxui::controls::PictureSupplyFunction ToolkitPicture(std::string const& name);

}  // namespace testsupport
