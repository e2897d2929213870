#include "moxui/controls/UI_HotTextButton.h"

#include <QPainter>
#include <QStyle>
#include <algorithm>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/widgets/PushButton.h"

namespace moxui::controls {
namespace {

namespace Key = skins::ThemeColor;

/// The room that the focus ring needs on each side of the text.
float RingWidth() {
    return skins::ThemeProvider::Get().GetSize(skins::ThemeSize::CornerRadius);
}

class LinkWidget : public backend::PushButton {
public:
    LinkWidget() : PushButton(ui::AccessibleRole::Link) { setCursor(Qt::PointingHandCursor); }

protected:
    QRectF LabelRoom() const override {
        qreal const ring = RingWidth();
        return QRectF(rect()).adjusted(ring, 0, -ring, 0);
    }

    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        auto const room = LabelRoom();
        auto underlined = font();
        underlined.setUnderline(IsHovered() || hasFocus());
        painter.setFont(underlined);
        painter.setPen(Color(!isEnabled() ? Key::kDisabledText
                             : isDown()   ? Key::kText
                                          : Key::kLink));
        GetLabel().Paint(painter, room, Qt::AlignLeft, layoutDirection());
        if (!hasFocus()) return;
        int const ring = static_cast<int>(RingWidth());
        auto const text = QStyle::alignedRect(
            layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter,
            GetLabel().NaturalSize(font()).boundedTo(room.size().toSize()), room.toRect());
        backend::PaintFocusRing(painter, QRectF(text.adjusted(-ring, -ring, ring, ring) & rect()));
    }
};

}  // namespace

UI_HotTextButton::UI_HotTextButton(moxcore::string::UTF16String const& text)
    : UI_Button(backend::MakePeer<LinkWidget>()) {
    SetText(text);
}

UI_HotTextButton::~UI_HotTextButton() = default;

moxcore::geom::PointT<float> UI_HotTextButton::UI_GetRecommendedSize(drawbot::Drawbot*) const {
    auto const* const widget = GetPeer().GetWidgetAs<LinkWidget>();
    if (!widget) return {};
    auto const size = widget->GetLabel().NaturalSize(widget->font());
    return {static_cast<float>(size.width()), static_cast<float>(size.height())};
}

moxcore::geom::RectT<float> UI_HotTextButton::UI_GetDrawnRect() const {
    auto const place = UI_GetLocalRectF(true);
    return place.IsEmpty() ? place : moxcore::geom::Grown(place, RingWidth());
}

}  // namespace moxui::controls
