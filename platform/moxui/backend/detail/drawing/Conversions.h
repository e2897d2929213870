#pragma once

#include <QColor>
#include <QRect>
#include <QRectF>
#include <QString>
#include <algorithm>
#include <cmath>

#include "moxcore/geom/Rect.h"
#include "moxcore/string/UTF16String.h"
#include "moxui/drawbot/ColorRGBA.h"
#include "moxui/drawbot/TruncationMode.h"

namespace moxui::backend {

[[nodiscard]] inline QString ToQString(moxcore::string::UTF16String const& text) {
    return QString::fromUtf16(reinterpret_cast<char16_t const*>(text.data()),
                              static_cast<qsizetype>(text.size()));
}

[[nodiscard]] inline moxcore::string::UTF16String FromQString(QString const& text) {
    auto const* const units = reinterpret_cast<unsigned short const*>(text.utf16());
    return {units, units + text.size()};
}

[[nodiscard]] inline QColor ToQColor(drawbot::ColorRGBA const& color) {
    return QColor::fromRgbF(color.red, color.green, color.blue, color.alpha);
}

[[nodiscard]] inline QRectF ToQRectF(moxcore::geom::RectT<float> const& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

/// The whole units nearest to the edges of `rect`, so that what touches goes on touching.
[[nodiscard]] inline QRect ToWholeUnits(moxcore::geom::RectT<float> const& rect) {
    auto const whole = [](float edge) { return static_cast<int>(std::lround(edge)); };
    int const left = whole(rect.x);
    int const top = whole(rect.y);
    return {left, top, std::max(0, whole(rect.x + rect.width) - left),
            std::max(0, whole(rect.y + rect.height) - top)};
}

[[nodiscard]] inline moxcore::geom::RectT<float> FromQRectF(QRectF const& rect) {
    return {static_cast<float>(rect.x()), static_cast<float>(rect.y()),
            static_cast<float>(rect.width()), static_cast<float>(rect.height())};
}

/// Where Qt puts the ellipsis of a text.
[[nodiscard]] inline Qt::TextElideMode ToElideMode(drawbot::TruncationMode mode) {
    switch (mode) {
        case drawbot::TruncationMode::Middle:
            return Qt::ElideMiddle;
        case drawbot::TruncationMode::End:
            return Qt::ElideRight;
        case drawbot::TruncationMode::Start:
            return Qt::ElideLeft;
        case drawbot::TruncationMode::None:
            break;
    }
    return Qt::ElideNone;
}

}  // namespace moxui::backend
