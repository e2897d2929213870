#include "moxui/backend/detail/ItemText.h"

#include <QFontMetricsF>

namespace moxui::backend {

QString OnOneLine(QString text) {
    for (auto& character : text)
        if (character.category() == QChar::Other_Control ||
            character.category() == QChar::Separator_Line ||
            character.category() == QChar::Separator_Paragraph)
            character = QLatin1Char(' ');
    return text;
}

void PaintItemText(QPainter& painter, QRectF const& place, QString const& text,
                   QColor const& color) {
    auto const line =
        QFontMetricsF(painter.font()).elidedText(OnOneLine(text), Qt::ElideRight, place.width());
    auto const side = text.isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft;
    painter.setPen(color);
    painter.drawText(place, int(side | Qt::AlignVCenter | Qt::TextSingleLine), line);
}

}  // namespace moxui::backend
