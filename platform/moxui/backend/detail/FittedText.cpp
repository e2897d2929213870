#include "moxui/backend/detail/FittedText.h"

#include <QFontMetricsF>
#include <QHelpEvent>
#include <QStyle>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

#include "moxui/backend/detail/Conversions.h"
#include "moxui/backend/detail/ToolTip.h"

namespace moxui::backend {
namespace {

bool BreaksLine(QChar c) {
    return c == u'\n' || c.category() == QChar::Separator_Line ||
           c.category() == QChar::Separator_Paragraph;
}

Qt::LayoutDirection DirectionOf(QString const& text) {
    return text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
}

QString WithoutSpacesAtEnd(QString text) {
    while (text.endsWith(u' '))
        text.chop(1);
    return text;
}

int WholeUnits(qreal length) {
    return static_cast<int>(std::ceil(length));
}

}  // namespace

void FittedText::SetText(moxcore::string::UTF16String const& text, bool severalLines) {
    naturalSize = QSize();
    multiLine = severalLines;
    whole = ToQString(text);
    whole.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (auto& c : whole)
        if (BreaksLine(c))
            c = multiLine ? u'\n' : u' ';
        else if (c.category() == QChar::Other_Control)
            c = u' ';
}

QSize FittedText::NaturalSize(QFont const& font) const {
    if (naturalSize.isValid() && measuredFont == font) return naturalSize;
    QFontMetricsF const metrics(font);
    auto const paragraphs = whole.split(u'\n');
    qreal width = 0;
    for (auto const& paragraph : paragraphs)
        width = std::max(width, metrics.horizontalAdvance(paragraph));
    measuredFont = font;
    naturalSize = {WholeUnits(width),
                   WholeUnits(metrics.height() +
                              static_cast<qreal>(paragraphs.size() - 1) * metrics.lineSpacing())};
    return naturalSize;
}

void FittedText::Fit(QFont const& font, QSizeF const& room) {
    lines.clear();
    elided = false;
    if (multiLine) {
        Wrap(font, room);
        return;
    }
    lines.append(QFontMetricsF(font).elidedText(whole, elideMode, room.width()));
    elided = lines.back() != whole;
}

void FittedText::Wrap(QFont const& font, QSizeF const& room) {
    QFontMetricsF const metrics(font);
    auto const maxLines =
        std::max(1, static_cast<int>((room.height() + metrics.leading()) / metrics.lineSpacing()));
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);

    qsizetype paragraphStart = 0;
    for (auto const& paragraph : whole.split(u'\n')) {
        QTextLayout layout(paragraph, font);
        layout.setTextOption(option);
        layout.beginLayout();
        for (auto line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(room.width());
            auto const end = paragraphStart + line.textStart() + line.textLength();
            if (lines.size() + 1 == maxLines && end < whole.size()) {
                auto const rest = whole.mid(paragraphStart + line.textStart()).replace(u'\n', u' ');
                lines.append(metrics.elidedText(rest, elideMode, room.width()));
                elided = lines.back() != rest;
                return;
            }
            lines.append(WithoutSpacesAtEnd(paragraph.mid(line.textStart(), line.textLength())));
        }
        layout.endLayout();
        paragraphStart += paragraph.size() + 1;
    }
}

Qt::LayoutDirection FittedText::Direction() const {
    return DirectionOf(whole);
}

void FittedText::Paint(QPainter& painter, QRectF const& place, Qt::Alignment alignment) const {
    auto const lineSpacing = QFontMetricsF(painter.font()).lineSpacing();
    QRectF line(place.x(), place.y(), place.width(), multiLine ? lineSpacing : place.height());
    for (auto const& text : lines) {
        auto const direction = DirectionOf(text);
        painter.setLayoutDirection(direction);
        painter.drawText(
            line,
            static_cast<int>(QStyle::visualAlignment(direction, alignment) | Qt::AlignVCenter) |
                Qt::TextSingleLine | Qt::TextDontClip,
            text);
        line.translate(0, lineSpacing);
    }
}

bool FittedText::ShowWholeAsToolTip(QEvent const& event, QWidget& widget) const {
    if (event.type() != QEvent::ToolTip || !elided || !widget.toolTip().isEmpty()) return false;
    ShowToolTip(static_cast<QHelpEvent const&>(event).globalPos(), whole, widget, widget.rect());
    return true;
}

}  // namespace moxui::backend
