#include "moxui/backend/detail/FocusOrder.h"

#include <algorithm>

#include "moxui/backend/detail/Conversions.h"
#include "moxui/backend/detail/ReadingOrder.h"
#include "moxui/backend/detail/ScrollWidget.h"

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
        places.push_back(FromQRectF(
            QRectF(QPointF(widget->mapTo(&ancestor, QPoint())), QSizeF(widget->size()))));
    }
    std::vector<QWidget*> ordered;
    for (auto const place : ReadingOrder(places))
        ordered.push_back(widgets[place]);
    return ordered;
}

std::vector<QWidget*> TabStopsBelow(QWidget const& ancestor) {
    auto stops = FocusableBelow(ancestor);
    std::vector<QWidget*> leftOut;
    for (auto* const widget : stops) {
        auto const* const list = dynamic_cast<ScrollWidget const*>(widget);
        if (!list) continue;
        auto const* const stop = list->RowForTab();
        for (auto* const row : list->Rows())
            if (row != stop) leftOut.push_back(row);
        if (!FocusableBelow(*list).empty()) leftOut.push_back(widget);
    }
    std::sort(leftOut.begin(), leftOut.end());
    stops.erase(std::remove_if(stops.begin(), stops.end(),
                               [&](QWidget* widget) {
                                   return std::binary_search(leftOut.begin(), leftOut.end(),
                                                             widget);
                               }),
                stops.end());
    return stops;
}

}  // namespace moxui::backend
