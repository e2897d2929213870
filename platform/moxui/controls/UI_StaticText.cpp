#include "moxui/controls/UI_StaticText.h"

#include <QLabel>
#include <QPainter>
#include <algorithm>

#include "moxui/backend/HostWidget.h"
#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/FittedText.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/drawing/WidgetStyle.h"
#include "moxui/backend/detail/widgets/Accessibility.h"
#include "moxui/backend/detail/widgets/Peer.h"

namespace moxui::controls {
namespace {

namespace Key = skins::ThemeColor;

/// How far the tallest and the deepest letters are drawn past their line's edges.
constexpr float kReach = 1;

class Label : public QLabel, public backend::NodeLink {
public:
    Label() {
        setStyle(&backend::WidgetStyle::Get());
        setTextFormat(Qt::PlainText);
        setFont(backend::ThemeFont(""));
    }

    void SetText(moxcore::string::UTF16String const& newText) {
        auto const before = text();
        fitted.SetText(newText, multiLine);
        setText(fitted.GetWhole());  // for assistive tools
        Refit();
        if (isStatus && isVisible() && text() != before) backend::Announce(*this);
    }
    void SetStatus() {
        isStatus = true;
        backend::SetStatus(*this);
    }
    void SetElideMode(Qt::TextElideMode mode) {
        fitted.SetElideMode(mode);
        Refit();
    }
    [[nodiscard]] QSize NaturalSize() const { return fitted.NaturalSize(font()); }

    bool multiLine = false;

protected:
    bool event(QEvent* event) override {
        return fitted.ShowWholeAsToolTip(*event, *this) || QLabel::event(event);
    }
    void changeEvent(QEvent* event) override {
        QLabel::changeEvent(event);
        if (event->type() == QEvent::FontChange) Refit();
    }
    void showEvent(QShowEvent* event) override {
        QLabel::showEvent(event);
        if (isStatus) backend::Announce(*this);
    }
    void resizeEvent(QResizeEvent* event) override {
        QLabel::resizeEvent(event);
        Refit();
    }
    void paintEvent(QPaintEvent*) override {
        if (!node) return;
        QPainter painter(this);
        auto const& client = static_cast<UI_StaticText const&>(*node);
        painter.setFont(font());
        painter.setPen(
            backend::ToQColor(client.GetColor(isEnabled() ? Key::kText : Key::kDisabledText)));
        fitted.Paint(painter, QRectF(rect()), alignment(), layoutDirection());
        if (hasFocus()) backend::PaintFocusRing(painter, QRectF(rect()));
    }

private:
    void Refit() {
        fitted.Fit(font(), size());
        update();
    }

    backend::FittedText fitted;
    bool isStatus = false;
};

Label* LabelOf(UI_StaticText const& text) {
    return text.GetPeer().GetWidgetAs<Label>();
}

Qt::Alignment ToQtAlignment(TextAlignment alignment) {
    switch (alignment) {
        case TextAlignment::Center:
            return Qt::AlignHCenter;
        case TextAlignment::Trailing:
            return Qt::AlignRight;
        case TextAlignment::Leading:
            break;
    }
    return Qt::AlignLeft;
}

}  // namespace

UI_StaticText::UI_StaticText() : UI_ControlView(backend::MakePeer<Label>()) {
    SetAlignment(TextAlignment::Leading);
}

UI_StaticText::UI_StaticText(moxcore::string::UTF16String const& text) : UI_StaticText() {
    SetText(text);
}

UI_StaticText::~UI_StaticText() = default;

void UI_StaticText::SetText(moxcore::string::UTF16String const& newText) {
    text = newText;
    if (auto* const label = LabelOf(*this)) label->SetText(text);
}

void UI_StaticText::SetFontStyleName(std::string const& name) {
    if (auto* const label = LabelOf(*this)) label->setFont(backend::NamedFont(name));
    UI_DrawnRectChanged();
}

void UI_StaticText::SetAlignment(TextAlignment alignment) {
    if (auto* const label = LabelOf(*this)) label->setAlignment(ToQtAlignment(alignment));
}

void UI_StaticText::SetTruncationMode(drawbot::TruncationMode mode) {
    if (auto* const label = LabelOf(*this)) label->SetElideMode(backend::ToElideMode(mode));
}

void UI_StaticText::SetMultiLine(bool multiLine) {
    auto* const label = LabelOf(*this);
    if (!label) return;
    label->multiLine = multiLine;
    label->SetText(text);
}

void UI_StaticText::SetStatus() {
    if (auto* const label = LabelOf(*this)) label->SetStatus();
}

moxcore::geom::PointT<float> UI_StaticText::UI_GetRecommendedSize(drawbot::Drawbot*) const {
    auto const* const label = LabelOf(*this);
    if (!label) return {};
    auto const size = label->NaturalSize();
    return {static_cast<float>(size.width()), static_cast<float>(size.height())};
}

moxcore::geom::RectT<float> UI_StaticText::UI_GetDrawnRect() const {
    auto place = UI_GetLocalRectF(true);
    auto const* const label = LabelOf(*this);
    if (!label || place.IsEmpty()) return place;
    auto const missing =
        static_cast<float>(label->fontMetrics().height()) + 2 * kReach - place.height;
    if (missing > 0) {
        place.y -= missing / 2;
        place.height += missing;
    }
    return place;
}

}  // namespace moxui::controls
