#include "quillohostkit/widgets/ElidedLabel.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>

#include "quillohostkit/text/PlainText.h"

namespace quillohostkit {

ElidedLabel::ElidedLabel(QString const& name, Qt::TextElideMode mode) : name(name), mode(mode) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ElidedLabel::SetText(QString const& newText) {
    text = QString::fromStdString(OneLine(newText.toStdString()));
    setAccessibleName(text.isEmpty() ? name : name + ": " + text);
    updateGeometry();
    update();
}

QSize ElidedLabel::sizeHint() const {
    auto const margins = contentsMargins();
    return {fontMetrics().horizontalAdvance(text) + margins.left() + margins.right(),
            fontMetrics().height() + 4};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {40, sizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    // A path reads from left to right whatever the window does.
    painter.setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    auto const side = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeading);
    painter.drawText(contentsRect(),
                     Qt::AlignVCenter | Qt::AlignAbsolute | side | Qt::TextSingleLine,
                     fontMetrics().elidedText(text, mode, contentsRect().width()));
}

bool ElidedLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip)
        setToolTip(fontMetrics().horizontalAdvance(text) > contentsRect().width()
                       ? text.toHtmlEscaped()
                       : "");
    return QWidget::event(event);
}

}  // namespace quillohostkit
