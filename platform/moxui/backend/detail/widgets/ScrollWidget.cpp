#include "moxui/backend/detail/widgets/ScrollWidget.h"
#include "moxui/backend/detail/widgets/CallFromQt.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>

#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/focus/FocusOrder.h"
#include "moxui/backend/detail/menus/ListStyle.h"
#include "moxui/backend/detail/widgets/ViewWidget.h"

namespace moxui::backend {
namespace {

bool IsRow(QWidget const* widget) {
    auto const* const view = dynamic_cast<ViewWidget const*>(widget);
    return view && view->role == ui::AccessibleRole::ListItem;
}

int Top(QWidget const& row, QWidget const& content) {
    return row.mapTo(&content, QPoint()).y();
}

}  // namespace

ScrollWidget::ScrollWidget() {
    setStyle(&ListStyle::Get());
    for (auto* const bar : {verticalScrollBar(), horizontalScrollBar()}) {
        bar->setStyle(&ListStyle::Get());
        bar->setSingleStep(WholeSize(skins::ThemeSize::ScrollStep));
    }
    setFrameShape(QFrame::NoFrame);
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* now) { OnFocusChanged(now); });
}

void ScrollWidget::PlaceContent() {
    scrollContentsBy(0, 0);
}

bool ScrollWidget::CanScroll() const {
    return verticalScrollBar()->maximum() > 0 || horizontalScrollBar()->maximum() > 0;
}

std::vector<QWidget*> ScrollWidget::Rows() const {
    if (!widget()) return {};
    auto rows = FocusableBelow(*widget());
    rows.erase(std::remove_if(rows.begin(), rows.end(), [](auto* row) { return !IsRow(row); }),
               rows.end());
    return rows;
}

QWidget* ScrollWidget::RowForTab() const {
    auto const rows = Rows();
    if (rows.empty()) return nullptr;
    auto const last = std::find(rows.begin(), rows.end(), lastRow.data());
    return last == rows.end() ? rows.front() : *last;
}

void ScrollWidget::OnFocusChanged(QWidget* now) {
    if (!now || !widget() || !widget()->isAncestorOf(now)) return;
    if (IsRow(now)) lastRow = now;
    // What the mouse presses must stay below it until it is released.
    if (QGuiApplication::mouseButtons() == Qt::NoButton) ensureWidgetVisible(now, 0, 0);
}

bool ScrollWidget::MoveFocus(int key) {
    auto const rows = Rows();
    auto const at = std::find(rows.begin(), rows.end(), QApplication::focusWidget());
    if (at == rows.end()) return false;
    int const page = viewport()->height();
    int const top = Top(**at, *widget());
    auto target = at;
    switch (key) {
        case Qt::Key_Down:
            ++target;
            break;
        case Qt::Key_Up:
            if (target != rows.begin()) --target;
            break;
        case Qt::Key_Home:
            target = rows.begin();
            break;
        case Qt::Key_End:
            target = rows.end();
            break;
        case Qt::Key_PageDown:
            while (target != rows.end() && Top(**target, *widget()) < top + page)
                ++target;
            break;
        case Qt::Key_PageUp:
            while (target != rows.begin() && Top(**target, *widget()) > top - page)
                --target;
            break;
        default:
            return false;
    }
    if (target == rows.end()) --target;
    (*target)->setFocus(Qt::OtherFocusReason);
    return true;
}

void ScrollWidget::scrollContentsBy(int dx, int dy) {
    QScrollArea::scrollContentsBy(dx, dy);
    if (node && onScrolled) CallFromQt(onScrolled);
}

void ScrollWidget::keyPressEvent(QKeyEvent* event) {
    if (event->modifiers() & ~Qt::KeypadModifier) {
        event->ignore();
        return;
    }
    if (MoveFocus(event->key())) return;
    auto* const bar = verticalScrollBar();
    if (event->key() == Qt::Key_Home)
        bar->setValue(bar->minimum());
    else if (event->key() == Qt::Key_End)
        bar->setValue(bar->maximum());
    else
        QScrollArea::keyPressEvent(event);
}

void ScrollWidget::paintEvent(QPaintEvent*) {
    if (!hasFocus()) return;
    QPainter painter(viewport());
    PaintFocusRing(painter, QRectF(viewport()->rect()));
}

}  // namespace moxui::backend
