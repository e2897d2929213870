#include "moxui/controls/UI_ScrollView.h"

#include <QScrollBar>
#include <utility>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/widgets/ScrollWidget.h"

namespace moxui::controls {
namespace {

backend::ScrollWidget* WidgetOf(UI_ScrollView const& view) {
    return view.GetPeer().GetWidgetAs<backend::ScrollWidget>();
}

}  // namespace

UI_ScrollView::UI_ScrollView(unsigned flags, boost::intrusive_ptr<ui::UI_SubView> contentView)
    : UI_ControlView(backend::MakePeer<backend::ScrollWidget>()),
      content(contentView ? std::move(contentView) : new ui::UI_SubView) {
    ChildPushBack(content);
    auto* const widget = WidgetOf(*this);
    if (flags & kVerticalOnly) widget->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    if (auto* const shown = content->GetPeer().GetWidget()) {
        widget->setWidget(shown);
        // What is behind the scroll view shows through.
        shown->setAutoFillBackground(false);
        widget->viewport()->setAutoFillBackground(false);
    }
    content->UI_Show(true);
}

UI_ScrollView::~UI_ScrollView() {
    // The content may live on with its own widget.
    if (auto* const widget = WidgetOf(*this)) widget->takeWidget();
}

void UI_ScrollView::SetContentRect(moxcore::geom::RectT<float> const& rect) {
    content->UI_SetLocalRectF(rect);
    Update();
}

void UI_ScrollView::Update() {
    if (auto* const widget = WidgetOf(*this)) widget->PlaceContent();
}

moxcore::geom::PointT<float> UI_ScrollView::GetScrollPosition() const {
    auto const* const widget = WidgetOf(*this);
    if (!widget) return {};
    return {static_cast<float>(widget->horizontalScrollBar()->value()),
            static_cast<float>(widget->verticalScrollBar()->value())};
}

void UI_ScrollView::SetScrollPosition(moxcore::geom::PointT<float> const& position) {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    auto const whole = QPointF(position.x, position.y).toPoint();
    widget->horizontalScrollBar()->setValue(whole.x());
    widget->verticalScrollBar()->setValue(whole.y());
}

void UI_ScrollView::SetScrolledFunction(std::function<void()> function) {
    if (auto* const widget = WidgetOf(*this)) widget->onScrolled = std::move(function);
}

}  // namespace moxui::controls
