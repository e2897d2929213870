#include "moxui/controls/UI_ProgressBar.h"

#include <QPainter>
#include <QPainterPath>
#include <QProgressBar>
#include <QStyle>
#include <algorithm>
#include <limits>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/WidgetStyle.h"
#include "moxui/backend/detail/widgets/Peer.h"

namespace moxui::controls {
namespace {

namespace Key = skins::ThemeColor;

class Bar : public QProgressBar, public backend::NodeLink {
public:
    Bar() {
        setStyle(&backend::WidgetStyle::Get());
        setTextVisible(false);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        if (!node) return;
        auto const& client = static_cast<UI_ProgressBar const&>(*node);
        auto const color = [&](int key) { return backend::ToQColor(client.GetColor(key)); };
        qreal const line = skins::ThemeProvider::Get().GetSize(skins::ThemeSize::LineWidth);
        qreal const radius = skins::ThemeProvider::Get().GetSize(skins::ThemeSize::CornerRadius);
        auto const frame = QRectF(rect()).adjusted(line / 2, line / 2, -line / 2, -line / 2);

        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath outline;
        outline.addRoundedRect(frame, radius, radius);
        painter.fillPath(outline, color(Key::kControl));
        auto done = frame;
        done.setWidth(frame.width() * value() / maximum());
        if (layoutDirection() == Qt::RightToLeft) done.moveRight(frame.right());
        painter.save();
        painter.setClipRect(done);
        painter.fillPath(outline, color(isEnabled() ? Key::kProgress : Key::kDisabledText));
        painter.restore();
        painter.strokePath(outline, QPen(color(Key::kControlBorder), line));
    }
};

}  // namespace

UI_ProgressBar::UI_ProgressBar() : UI_ControlView(backend::MakePeer<Bar>()) {
    SetProgress(0, 0);
}

UI_ProgressBar::~UI_ProgressBar() = default;

void UI_ProgressBar::SetProgress(unsigned newValue, unsigned newMaximum) {
    value = newValue;
    maximum = newMaximum;
    auto* const bar = GetPeer().GetWidgetAs<Bar>();
    if (!bar) return;
    // Qt counts in int, and takes a range of nothing for "nobody knows how long".
    unsigned const divisor = maximum > std::numeric_limits<int>::max() ? 2 : 1;
    bar->setRange(0, static_cast<int>(std::max(1U, maximum / divisor)));
    bar->setValue(static_cast<int>(std::min(value, maximum) / divisor));
}

}  // namespace moxui::controls
