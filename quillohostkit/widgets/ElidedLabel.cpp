#include "quillohostkit/widgets/ElidedLabel.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <utility>

#include "moxui/backend/HostWidget.h"
#include "quillohostkit/text/PlainText.h"

namespace quillohostkit {

namespace {

/// Qt knows a widget that draws itself as a mere area.
class AccessibleLabel : public QAccessibleWidget {
public:
    explicit AccessibleLabel(ElidedLabel* label) : QAccessibleWidget(label) {}

    QAccessible::Role role() const override {
        return static_cast<ElidedLabel*>(widget())->IsStatus() ? QAccessible::AlertMessage
                                                               : QAccessible::StaticText;
    }
};

QAccessibleInterface* MakeInterface(QString const&, QObject* object) {
    auto* const label = dynamic_cast<ElidedLabel*>(object);
    return label ? new AccessibleLabel(label) : nullptr;
}

}  // namespace

ElidedLabel::ElidedLabel(QString const& name, Qt::TextElideMode mode) : name(name), mode(mode) {
    [[maybe_unused]] static bool const isInstalled = [] {
        QAccessible::installFactory(&MakeInterface);
        return true;
    }();
    setAccessibleName(name);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ElidedLabel::SetText(QString const& newText) {
    auto line = QString::fromStdString(OneLine(newText.toStdString()));
    if (line == text) return;
    text = std::move(line);
    setAccessibleName(text.isEmpty() ? name : name + ": " + text);
    updateGeometry();
    update();
    if (isStatus && !text.isEmpty() && isVisible()) moxui::backend::Announce(*this);
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
