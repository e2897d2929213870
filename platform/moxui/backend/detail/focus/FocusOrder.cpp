#include "moxui/backend/detail/focus/FocusOrder.h"

#include <QStyle>
#include <algorithm>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/focus/ReadingOrder.h"
#include "moxui/backend/detail/widgets/ScrollWidget.h"

namespace moxui::backend {

std::vector<QWidget*> FocusableBelow(QWidget const& ancestor) {
    std::vector<QWidget*> widgets;
    std::vector<moxcore::geom::RectT<float>> places;
    for (auto* const widget : ancestor.findChildren<QWidget*>()) {
        if (!(widget->focusPolicy() & Qt::TabFocus) || !widget->isEnabled() ||
            !widget->isVisibleTo(&ancestor) || widget->focusProxy() ||
            widget->window() != ancestor.window())
            continue;
        widgets.push_back(widget);
        QRect const place(widget->mapTo(&ancestor, QPoint()), widget->size());
        places.push_back(FromQRectF(
            QRectF(QStyle::visualRect(ancestor.layoutDirection(), ancestor.rect(), place))));
    }
    std::vector<QWidget*> ordered;
    for (auto const place : ReadingOrder(places))
        ordered.push_back(widgets[place]);
    return ordered;
}

std::vector<QWidget*> TabStopsBelow(QWidget const& ancestor) {
    auto const focusable = FocusableBelow(ancestor);
    std::vector<QWidget const*> rows;
    for (auto const* const widget : focusable)
        if (auto const* const list = dynamic_cast<ScrollWidget const*>(widget))
            for (auto const* const row : list->Rows())
                rows.push_back(row);
    std::sort(rows.begin(), rows.end());

    std::vector<QWidget*> stops;
    for (auto* const widget : focusable) {
        auto const* const list = dynamic_cast<ScrollWidget const*>(widget);
        if (!list) {
            if (!std::binary_search(rows.begin(), rows.end(), widget)) stops.push_back(widget);
        } else if (auto* const row = list->RowForTab()) {
            // In the list's place: its own may be scrolled off.
            stops.push_back(row);
        } else if (list->CanScroll() && FocusableBelow(*list).empty()) {
            stops.push_back(widget);
        }
    }
    return stops;
}

}  // namespace moxui::backend
