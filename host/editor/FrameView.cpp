#include "host/editor/FrameView.h"

#include <QPainter>
#include <utility>

#include "quillohostkit/widgets/QtText.h"

namespace quillohost::editor {

FrameView::FrameView(std::function<void()> newOnResized) : onResized(std::move(newOnResized)) {
    setMinimumSize(160, 90);
    setAccessibleName(quillohostkit::QtText("$$$/Vistrel/quillo-host/Player/Picture=Picture"));
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void FrameView::SetFrame(QImage const& newFrame) {
    frame = newFrame;
    update();
}

void FrameView::SetText(QString const& newText) {
    text = newText;
    setAccessibleDescription(text);
    update();
}

QSize FrameView::PixelBounds() const {
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

void FrameView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    if (frame.isNull()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect().adjusted(16, 16, -16, -16), Qt::AlignCenter | Qt::TextWordWrap,
                         text);
        return;
    }
    QRect place(QPoint(), frame.size().scaled(size(), Qt::KeepAspectRatio));
    place.moveCenter(rect().center());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, frame);
}

void FrameView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    onResized();
}

}  // namespace quillohost::editor
