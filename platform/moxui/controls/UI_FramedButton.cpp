#include "moxui/controls/UI_FramedButton.h"

#include <QPainter>
#include <QStyle>
#include <algorithm>
#include <cmath>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/widgets/PushButton.h"

namespace moxui::controls {
namespace {

namespace Key = skins::ThemeColor;
using skins::ThemeSize;

qreal Size(ThemeSize size) {
    return skins::ThemeProvider::Get().GetSize(size);
}

class FramedWidget : public backend::PushButton {
public:
    FramedWidget() : PushButton(ui::AccessibleRole::Button) {}

    void SetPicture(boost::intrusive_ptr<drawbot::ImageInterface> newPicture) {
        picture = std::move(newPicture);
        Refit();
    }

    /// Room for what the button shows and a frame around it, where it shows a picture alone; empty
    /// otherwise.
    [[nodiscard]] QSizeF LeastSize() const {
        if (!picture || !GetLabel().GetWhole().isEmpty()) return {};
        auto const margin = Size(ThemeSize::CornerRadius);
        return QSizeF(PictureSize()).grownBy({margin, margin, margin, margin});
    }

    /// The size of picture and text, side by side, in whole units.
    [[nodiscard]] QSize ContentSize() const {
        auto const text = GetLabel().NaturalSize(font());
        auto const image = PictureSize();
        return {text.width() + Gap() + image.width(), std::max(text.height(), image.height())};
    }

    DisplayWhen container = DisplayWhen::Always;
    DisplayWhen border = DisplayWhen::Always;
    bool markedAsDefault = true;

protected:
    QRectF LabelRoom() const override {
        auto const content = Content();
        auto const image = PictureSize().width() + Gap();
        return !isRightToLeft() ? content.adjusted(image, 0, 0, 0)
                                : content.adjusted(0, 0, -image, 0);
    }

    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        PaintFrame(painter);
        if (hasFocus()) PaintFocus(painter);
        if (picture) PaintPicture(painter);
        painter.setFont(font());
        painter.setPen(Color(isEnabled() ? Key::kButtonText : Key::kDisabledText));
        GetLabel().Paint(painter, LabelRoom(), Qt::AlignLeft, layoutDirection());
    }

private:
    [[nodiscard]] QSize PictureSize() const {
        if (!picture) return {};
        auto const size = picture->GetSize();
        return {size.x, size.y};
    }
    [[nodiscard]] int Gap() const {
        return picture && !GetLabel().GetWhole().isEmpty()
                   ? static_cast<int>(Size(ThemeSize::ControlGap))
                   : 0;
    }

    /// Where picture and text go, in the middle. The room at the sides gives way before the text
    /// does.
    [[nodiscard]] QRectF Content() const {
        auto const least = picture && Gap() == 0 ? 0 : Size(ThemeSize::CornerRadius);
        auto const width = std::min<qreal>(ContentSize().width(), this->width() - 2 * least);
        return {std::floor((this->width() - width) / 2), 0, width, static_cast<qreal>(height())};
    }

    [[nodiscard]] bool IsShown(DisplayWhen when) const {
        return when == DisplayWhen::Always ||
               (when == DisplayWhen::Hovered && (IsHovered() || isDown() || isChecked()));
    }

    [[nodiscard]] QColor BorderColor() const {
        if (isChecked() || (isDefault() && markedAsDefault)) return Color(Key::kFocus);
        return isEnabled() ? Color(Key::kControlBorder)
                           : backend::ToQColor(skins::ThemeProvider::Get().GetGray(
                                 skins::HalcynGrayColor::Level4));
    }

    void PaintFrame(QPainter& painter) const {
        auto const line = Size(ThemeSize::LineWidth);
        auto const radius = Size(ThemeSize::CornerRadius);
        bool const latched = isDown() || isChecked();
        // A theme in which grounds look alike tells a button by its border.
        bool const isForced = IsShown(container) && skins::ThemeProvider::Get().GetKind() ==
                                                        skins::ThemeKind::HighContrast;
        bool const bordered =
            IsShown(border) || isForced || (latched && container == DisplayWhen::Hovered);
        auto const inset = bordered ? line / 2 : 0;
        auto const frame = QRectF(rect()).adjusted(inset, inset, -inset, -inset);
        if (IsShown(container)) {
            painter.setPen(Qt::NoPen);
            auto const fill = [&](QColor const& color) {
                painter.setBrush(color);
                painter.drawRoundedRect(frame, radius, radius);
            };
            auto const ground = Color(isEnabled() ? Key::kButtonGround : Key::kControlDisabled);
            auto const hovered = Color(Key::kButtonHovered);
            auto shade = Color(Key::kShade);
            fill(IsHovered() ? hovered : ground);
            if (latched) {
                fill(shade);
            } else if (IsHovered() && hovered == ground && container == DisplayWhen::Always) {
                shade.setAlphaF(shade.alphaF() / 2);
                fill(shade);
            }
        }
        if (bordered) {
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(BorderColor(), line));
            painter.drawRoundedRect(frame, radius, radius);
        }
    }

    /// A ring, and a line of the popup's ground within, that sets it off from any colour of the
    /// button's own.
    void PaintFocus(QPainter& painter) const {
        auto const radius = Size(ThemeSize::CornerRadius);
        if (IsShown(container)) {
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(Color(Key::kGround), Size(ThemeSize::LineWidth)));
            painter.drawRoundedRect(QRectF(rect()).adjusted(2, 2, -2, -2), radius - 1, radius - 1);
        }
        backend::PaintFocusRing(painter, QRectF(rect()));
    }

    void PaintPicture(QPainter& painter) const {
        auto const place = QStyle::alignedRect(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter,
                                               PictureSize(), Content().toRect());
        if (!isEnabled()) painter.setOpacity(backend::kOpacityOfDisabledPicture);
        static_cast<backend::QtImage const&>(*picture).Paint(painter, QRectF(place),
                                                             layoutDirection());
        painter.setOpacity(1);
    }

    boost::intrusive_ptr<drawbot::ImageInterface> picture;
};

FramedWidget* WidgetOf(UI_FramedButton const& button) {
    return button.GetPeer().GetWidgetAs<FramedWidget>();
}

}  // namespace

UI_FramedButton::UI_FramedButton() : UI_Button(backend::MakePeer<FramedWidget>()) {}

UI_FramedButton::~UI_FramedButton() = default;

void UI_FramedButton::SetButtonChromeType(ButtonChromeType type) {
    bool const quiet = type == ButtonChromeType::Quiet;
    SetContainerDisplay(quiet ? DisplayWhen::Hovered : DisplayWhen::Always);
    SetBorderDisplay(quiet ? DisplayWhen::Never : DisplayWhen::Always);
}

void UI_FramedButton::SetContainerDisplay(DisplayWhen when) {
    if (auto* const widget = WidgetOf(*this)) widget->container = when;
    UI_Invalidate();
}

void UI_FramedButton::SetBorderDisplay(DisplayWhen when) {
    if (auto* const widget = WidgetOf(*this)) widget->border = when;
    UI_Invalidate();
}

void UI_FramedButton::SetSpringLoaded(bool springLoaded) {
    if (auto* const widget = WidgetOf(*this)) widget->setCheckable(!springLoaded);
}

bool UI_FramedButton::IsOn() const {
    auto const* const widget = WidgetOf(*this);
    return widget && widget->isChecked();
}

void UI_FramedButton::SetCommitAppearance(bool marked) {
    if (auto* const widget = WidgetOf(*this)) widget->markedAsDefault = marked;
    UI_Invalidate();
}

moxcore::geom::PointT<float> UI_FramedButton::UI_GetRecommendedSize(drawbot::Drawbot*) const {
    auto const* const widget = WidgetOf(*this);
    if (!widget) return {};
    auto const& theme = skins::ThemeProvider::Get();
    auto const height = theme.GetSize(ThemeSize::ControlHeight);
    if (!widget->LeastSize().isEmpty()) return {height, height};
    return {static_cast<float>(widget->ContentSize().width()) +
                2 * theme.GetSize(ThemeSize::ControlPadding),
            height};
}

void UI_FramedButton::UI_ThemeChanged() {
    UI_Button::UI_ThemeChanged();
    RefreshImage();
}

void UI_FramedButton::SetImageSupplyFunction(PictureSupplyFunction const& function) {
    supply = function;
    RefreshImage();
}

void UI_FramedButton::RefreshImage() {
    if (auto* const widget = WidgetOf(*this)) widget->SetPicture(SuppliedPicture(supply));
    UI_DrawnRectChanged();
}

moxcore::geom::RectT<float> UI_FramedButton::UI_GetDrawnRect() const {
    auto const place = UI_GetLocalRectF(true);
    auto const* const widget = WidgetOf(*this);
    if (!widget || place.IsEmpty()) return place;
    auto const least = widget->LeastSize();
    auto const missing = [](float length, qreal wanted) {
        return std::max(0.0F, static_cast<float>(wanted) - length);
    };
    float const across = missing(place.width, least.width());
    float const down = missing(place.height, least.height());
    return {place.x - across / 2, place.y - down / 2, place.width + across, place.height + down};
}

}  // namespace moxui::controls
