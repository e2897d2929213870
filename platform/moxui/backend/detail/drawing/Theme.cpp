#include "moxui/backend/detail/drawing/Theme.h"

#include <cmath>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/widgets/CallFromQt.h"
#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/skins/ThemeProvider.h"
#include "moxui/ui/UI_Container.h"

namespace moxui::backend {

QPalette ThemePalette() {
    auto const& theme = skins::ThemeProvider::Get();
    auto const color = [&](int key) { return ToQColor(theme.GetColor(key)); };
    namespace Key = skins::ThemeColor;

    QPalette palette;
    auto const set = [&](QPalette::ColorRole role, int key) { palette.setColor(role, color(key)); };
    set(QPalette::Window, Key::kGround);
    set(QPalette::Base, Key::kGround);
    set(QPalette::AlternateBase, Key::kGround);
    set(QPalette::Button, Key::kControl);
    set(QPalette::Highlight, Key::kHighlight);
    set(QPalette::ToolTipBase, Key::kControl);
    set(QPalette::Link, Key::kLink);
    set(QPalette::LinkVisited, Key::kLink);
    for (auto const role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::BrightText, QPalette::ToolTipText}) {
        set(role, Key::kText);
        palette.setColor(QPalette::Disabled, role, color(Key::kDisabledText));
    }
    set(QPalette::HighlightedText, Key::kSelectedText);
    set(QPalette::PlaceholderText, Key::kDisabledText);
    set(QPalette::Light, Key::kControlHovered);
    set(QPalette::Midlight, Key::kControlHovered);
    set(QPalette::Mid, Key::kControlBorder);
    set(QPalette::Dark, Key::kControlBorder);
    set(QPalette::Shadow, Key::kControlBorder);
    return palette;
}

void ApplyTheme(QWidget& widget) {
    widget.setPalette(ThemePalette());
    widget.setFont(ThemeFont(""));
}

void TellOfTheme(ui::UI_Node& node) {
    if (node.GetPeer().themeGeneration != ThemeGeneration()) {
        node.GetPeer().themeGeneration = ThemeGeneration();
        CallFromQt([&] { node.UI_ThemeChanged(); });
        node.UI_Invalidate();
    }
    auto* const container = dynamic_cast<ui::UI_Container*>(&node);
    if (!container) return;
    // A view may rebuild its children when the theme changes.
    auto const children =
        ui::UI_Container::Children(container->ChildBegin(), container->ChildEnd());
    for (auto const& child : children)
        TellOfTheme(*child);
}

int WholeSize(skins::ThemeSize size) {
    return static_cast<int>(std::lround(skins::ThemeProvider::Get().GetSize(size)));
}

QFont ThemeFont(std::string const& style, float factor) {
    auto const& theme = skins::ThemeProvider::Get();
    return QtFont(
        *QtSupplier().NewFont(theme.GetFontName(0), theme.GetFontSize(0) * factor, style));
}

QFont NamedFont(std::string const& name) {
    if (name.empty() || name == "Regular" || name == "Bold") return ThemeFont(name);
    auto const& theme = skins::ThemeProvider::Get();
    return QtFont(*QtSupplier().NewFont(skins::ValidateFontName(name), theme.GetFontSize(0), ""));
}

}  // namespace moxui::backend
