#include "moxui/skins/ThemeClient.h"

#include <algorithm>

namespace moxui::skins {

ThemeClient::~ThemeClient() = default;

drawbot::ColorRGBA ThemeClient::GetColor(int key) const {
    auto const& theme = ThemeProvider::Get();
    if (theme.GetKind() != ThemeKind::HighContrast)
        for (auto const& [ownKey, color] : ownColors)
            if (ownKey == key) return color;
    return theme.GetColor(key);
}

void ThemeClient::SetCustomThemeColor(int key, drawbot::ColorRGBA const& color) {
    auto const place = std::find_if(ownColors.begin(), ownColors.end(),
                                    [key](auto const& own) { return own.first == key; });
    if (place != ownColors.end())
        place->second = color;
    else
        ownColors.emplace_back(key, color);
    OnCustomThemeColorChanged();
}

std::string ThemeClient::GetFontName(int index) const {
    return ThemeProvider::Get().GetFontName(index);
}

float ThemeClient::GetFontSize(int index) const {
    return ThemeProvider::Get().GetFontSize(index);
}

void ThemeClient::OnCustomThemeColorChanged() {}

}  // namespace moxui::skins
