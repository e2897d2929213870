#include "moxui/backend/detail/drawing/FittedText.h"

#include <QCache>
#include <QFontMetricsF>
#include <QHelpEvent>
#include <QStyle>
#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <utility>

#include "moxcore/utility/NoDestructor.h"
#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/windows/ToolTip.h"

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

using Measured = std::pair<QFont, QString>;

/// The sizes of the texts that were measured last: each layout asks for them several times, and a
/// view that is shown again asks for the same.
QCache<Measured, QSize>& KnownSizes() {
    constexpr qsizetype kMostLetters = 50'000;
    // Never destroyed: its fonts would outlive the application that they belong to otherwise.
    static moxcore::utility::NoDestructor<QCache<Measured, QSize>> sizes(kMostLetters);
    return *sizes;
}

}  // namespace

void FittedText::SetText(moxcore::string::UTF16String const& text, bool severalLines) {
    laidOut = false;
    multiLine = severalLines;
    whole = ToQString(text);
    whole.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (auto& c : whole)
        if (BreaksLine(c))
            c = multiLine ? u'\n' : u' ';
        else if (c.category() == QChar::Other_Control)
            c = u' ';
}

void FittedText::SetElideMode(Qt::TextElideMode mode) {
    laidOut = false;
    elideMode = mode;
}

QSize FittedText::NaturalSize(QFont const& font) const {
    Measured const key{font, whole};
    if (auto const* const known = KnownSizes().object(key)) return *known;
    QFontMetricsF const metrics(font);
    auto const paragraphs = whole.split(u'\n');
    qreal width = 0;
    for (auto const& paragraph : paragraphs)
        width = std::max(width, metrics.horizontalAdvance(paragraph));
    QSize const size(WholeUnits(width),
                     WholeUnits(metrics.height() +
                                static_cast<qreal>(paragraphs.size() - 1) * metrics.lineSpacing()));
    KnownSizes().insert(key, new QSize(size), whole.size() + 1);
    return size;
}

void FittedText::Fit(QFont const& newFont, QSizeF const& newRoom) {
    laidOut = false;
    font = newFont;
    room = newRoom;
}

QString FittedText::GetFitted() const {
    LayOut();
    return lines.join(u'\n');
}

bool FittedText::IsElided() const {
    LayOut();
    return elided;
}

void FittedText::LayOut() const {
    if (std::exchange(laidOut, true)) return;
    lines.clear();
    elided = false;
    if (multiLine) return Wrap();
    if (NaturalSize(font).width() <= room.width()) {
        lines.append(whole);
        return;
    }
    lines.append(QFontMetricsF(font).elidedText(whole, elideMode, room.width()));
    elided = lines.back() != whole;
}

void FittedText::Wrap() const {
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

void FittedText::Paint(QPainter& painter, QRectF const& place, Qt::Alignment alignment,
                       Qt::LayoutDirection direction) const {
    LayOut();
    QFontMetricsF const metrics(painter.font());
    auto const lineHeight = multiLine ? metrics.lineSpacing() : place.height();
    auto baseline = place.y() + (lineHeight - std::ceil(metrics.height())) / 2 + metrics.ascent();
    auto const side = QStyle::visualAlignment(direction, alignment);
    for (auto const& text : lines) {
        qreal left = place.x();
        if (!(side & Qt::AlignLeft)) {
            auto const free = place.width() - metrics.horizontalAdvance(text);
            left += side & Qt::AlignHCenter ? free / 2 : free;
        }
        painter.setLayoutDirection(DirectionOf(text));
        painter.drawText(QPointF(left, baseline), text);
        baseline += lineHeight;
    }
}

bool FittedText::ShowWholeAsToolTip(QEvent const& event, QWidget& widget) const {
    if (event.type() != QEvent::ToolTip || !IsElided() || !widget.toolTip().isEmpty()) return false;
    ShowToolTip(static_cast<QHelpEvent const&>(event).globalPos(), whole, widget, widget.rect());
    return true;
}

}  // namespace moxui::backend
