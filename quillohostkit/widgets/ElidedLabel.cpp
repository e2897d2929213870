#include "quillohostkit/widgets/ElidedLabel.h"

#include <QEvent>
#include <QPainter>

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
    painter.drawText(contentsRect(), Qt::AlignVCenter | Qt::AlignLeading | Qt::TextSingleLine,
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
