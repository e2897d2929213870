#include "moxui/skins/ThemeProvider.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QStringList>
#include <algorithm>
#include <array>
#include <map>
#include <vector>

#include "moxcore/utility/NoDestructor.h"
#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/ui/OS_ViewContainer.h"

namespace moxui::skins {
namespace {

constexpr float kFontSize = 12;

/// 0xRRGGBB as a colour.
constexpr drawbot::ColorRGBA Rgb(unsigned value) {
    auto const component = [value](int shift) {
        return static_cast<float>((value >> shift) & 0xFF) / 255.0F;
    };
    return {component(16), component(8), component(0), 1};
}

struct Colors {
    std::array<drawbot::ColorRGBA, 6> grays;
    drawbot::ColorRGBA text, disabledText, link, highlight, focus, control, controlHovered,
        controlPressed, controlDisabled, controlBorder, progress, icon, selectedText, shade;
};

constexpr Colors kDark{
    .grays = {Rgb(0x181818), Rgb(0x242424), Rgb(0x2F2F2F), Rgb(0x3A3A3A), Rgb(0x4A4A4A),
              Rgb(0x6E6E6E)},
    .text = Rgb(0xE4E4E4),
    .disabledText = Rgb(0xA0A0A0),
    .link = Rgb(0x74B0FF),
    .highlight = Rgb(0x35404F),
    .focus = Rgb(0x4B9CFF),
    .control = Rgb(0x333333),
    .controlHovered = Rgb(0x3E3E3E),
    .controlPressed = Rgb(0x1D1D1D),
    .controlDisabled = Rgb(0x333333),
    .controlBorder = Rgb(0x757575),
    .progress = Rgb(0x4B9CFF),
    .icon = Rgb(0xD0D0D0),
    .selectedText = Rgb(0xFFFFFF),
    .shade = {0, 0, 0, 0.4F},
};

constexpr Colors kLight{
    .grays = {Rgb(0xE6E6E6), Rgb(0xF5F5F5), Rgb(0xDCDCDC), Rgb(0xCDCDCD), Rgb(0xB8B8B8),
              Rgb(0x8A8A8A)},
    .text = Rgb(0x222222),
    .disabledText = Rgb(0x646464),
    .link = Rgb(0x0B5CC4),
    .highlight = Rgb(0xD3E3F9),
    .focus = Rgb(0x1B6FE0),
    .control = Rgb(0xFDFDFD),
    .controlHovered = Rgb(0xEDEDED),
    .controlPressed = Rgb(0xD8D8D8),
    .controlDisabled = Rgb(0xE4E4E4),
    .controlBorder = Rgb(0x858585),
    .progress = Rgb(0x1B6FE0),
    .icon = Rgb(0x464646),
    .selectedText = Rgb(0x111111),
    .shade = {0, 0, 0, 0.2F},
};

constexpr Colors kHighContrast{
    .grays = {Rgb(0x000000), Rgb(0x000000), Rgb(0x1A1A1A), Rgb(0x595959), Rgb(0xFFFFFF),
              Rgb(0xFFFFFF)},
    .text = Rgb(0xFFFFFF),
    .disabledText = Rgb(0xB8B8B8),
    .link = Rgb(0x8CC8FF),
    .highlight = Rgb(0x003E7A),
    .focus = Rgb(0xFFE000),
    .control = Rgb(0x000000),
    .controlHovered = Rgb(0x333333),
    .controlPressed = Rgb(0x1A1A1A),
    .controlDisabled = Rgb(0x1F1F1F),
    .controlBorder = Rgb(0xFFFFFF),
    .progress = Rgb(0x8CC8FF),
    .icon = Rgb(0xFFFFFF),
    .selectedText = Rgb(0xFFFFFF),
    .shade = {1, 1, 1, 0.15F},
};

struct State {
    ThemeKind kind = ThemeKind::Dark;
    unsigned generation = 1;
    std::vector<ui::OS_ViewContainer*> windows;
};

State& TheState() {
    static moxcore::utility::NoDestructor<State> state;
    return *state;
}

Colors const& InForce() {
    switch (TheState().kind) {
        case ThemeKind::Light:
            return kLight;
        case ThemeKind::HighContrast:
            return kHighContrast;
        case ThemeKind::Dark:
            break;
    }
    return kDark;
}

}  // namespace

ThemeProvider const& ThemeProvider::Get() {
    static ThemeProvider const provider;
    return provider;
}

void ThemeProvider::SetTheme(ThemeKind kind) {
    auto& state = TheState();
    if (state.kind == kind) return;
    state.kind = kind;
    ++state.generation;
    auto const windows = state.windows;
    for (auto* const window : windows) {
        if (auto* const widget = window->GetPeer().GetWidget()) backend::ApplyTheme(*widget);
        backend::TellOfTheme(*window);
    }
}

ThemeKind ThemeProvider::GetKind() const {
    return TheState().kind;
}

drawbot::ColorRGBA ThemeProvider::GetColor(int key) const {
    auto const& colors = InForce();
    switch (key) {
        case ThemeColor::kText:
            return colors.text;
        case ThemeColor::kDisabledText:
            return colors.disabledText;
        case ThemeColor::kLink:
            return colors.link;
        case ThemeColor::kGround:
            return colors.grays[1];
        case ThemeColor::kHighlight:
            return colors.highlight;
        case ThemeColor::kFocus:
            return colors.focus;
        case ThemeColor::kControl:
            return colors.control;
        case ThemeColor::kControlHovered:
            return colors.controlHovered;
        case ThemeColor::kControlPressed:
            return colors.controlPressed;
        case ThemeColor::kControlBorder:
            return colors.controlBorder;
        case ThemeColor::kProgress:
            return colors.progress;
        case ThemeColor::kIcon:
            return colors.icon;
        case ThemeColor::kSelectedText:
            return colors.selectedText;
        case ThemeColor::kShade:
            return colors.shade;
        case ThemeColor::kControlDisabled:
            return colors.controlDisabled;
        case ThemeColor::kButtonText:
            return colors.text;
        case ThemeColor::kButtonGround:
            return colors.control;
        case ThemeColor::kButtonHovered:
            return colors.controlHovered;
        default:
            return Rgb(0xFF00FF);
    }
}

drawbot::ColorRGBA ThemeProvider::GetGray(HalcynGrayColor level) const {
    return InForce().grays.at(static_cast<std::size_t>(level));
}

std::string ThemeProvider::GetFontName(int) const {
    static std::string const name = [] {
        auto const families = QFontDatabase::families();
        for (char const* const wanted : {"Inter", "Noto Sans", "DejaVu Sans"})
            if (families.contains(QLatin1String(wanted))) return std::string(wanted);
        return QFontInfo(QFont()).family().toStdString();
    }();
    return name;
}

float ThemeProvider::GetFontSize(int) const {
    return kFontSize;
}

float ThemeProvider::GetSize(ThemeSize size) const {
    switch (size) {
        case ThemeSize::ControlHeight:
            return 20;
        case ThemeSize::ControlPadding:
            return 16;
        case ThemeSize::ControlGap:
            return 5;
        case ThemeSize::CornerRadius:
            return 3;
        case ThemeSize::LineWidth:
            return 1;
        case ThemeSize::FocusLine:
            return 1.5F;
        case ThemeSize::RowHeight:
            return 22;
        case ThemeSize::RowMargin:
            return 3;
        case ThemeSize::RowIndentation:
            return 16;
        case ThemeSize::MenuRowHeight:
            return 24;
        case ThemeSize::MenuPadding:
            return 8;
        case ThemeSize::MenuPicture:
            return 16;
        case ThemeSize::Chevron:
        case ThemeSize::ScrollBar:
            return 8;
        case ThemeSize::ShortestThumb:
            return 24;
        case ThemeSize::ScrollStep:
            return 20;
        case ThemeSize::ToastText:
            return 360;
        case ThemeSize::ToastPaddingAcross:
            return 16;
        case ThemeSize::ToastPaddingDown:
            return 10;
        case ThemeSize::ToastAboveFoot:
            return 32;
    }
    return 0;
}

std::string ValidateFontName(std::string const& name) {
    // Each heading of a list asks, and the system takes its time to answer.
    static std::map<std::string, bool> known;
    auto const [place, isNew] = known.try_emplace(name);
    if (isNew) place->second = QFontDatabase::hasFamily(QString::fromStdString(name));
    return place->second ? name : ThemeProvider::Get().GetFontName(0);
}

bool IsRunningV7OrBeyond() {
    return true;
}

namespace utilities {

drawbot::ColorRGBA GetHalcynGrayColor(ThemeProvider const& theme, HalcynGrayColor level) {
    return theme.GetGray(level);
}

drawbot::ColorRGBA Blend(drawbot::ColorRGBA const& from, drawbot::ColorRGBA const& to, float part) {
    auto const blend = [part](float a, float b) { return a + (b - a) * part; };
    return {blend(from.red, to.red), blend(from.green, to.green), blend(from.blue, to.blue),
            blend(from.alpha, to.alpha)};
}

}  // namespace utilities
}  // namespace moxui::skins

namespace moxui::backend {

unsigned ThemeGeneration() {
    return skins::TheState().generation;
}

void AddThemedWindow(ui::OS_ViewContainer& container) {
    skins::TheState().windows.push_back(&container);
}

void RemoveThemedWindow(ui::OS_ViewContainer& container) {
    auto& windows = skins::TheState().windows;
    windows.erase(std::remove(windows.begin(), windows.end(), &container), windows.end());
}

}  // namespace moxui::backend
