#include "quillohostkit/sharing/PaletteTheme.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace quillohostkit {
namespace {

using moxui::skins::ThemeKind;

/// Out of 21. The greys of usual themes stay below it.
constexpr double kHighContrast = 19.5;

/// As accessibility guidelines define it.
double Luminance(QColor const& color) {
    auto const linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double Contrast(QColor const& one, QColor const& other) {
    auto const [darker, lighter] = std::minmax({Luminance(one) + 0.05, Luminance(other) + 0.05});
    return lighter / darker;
}

}  // namespace

ThemeKind ThemeOf(QPalette const& palette) {
    constexpr std::pair<QPalette::ColorRole, QPalette::ColorRole> kTexts[] = {
        {QPalette::WindowText, QPalette::Window},
        {QPalette::Text, QPalette::Base},
        {QPalette::ButtonText, QPalette::Button}};
    if (std::all_of(std::begin(kTexts), std::end(kTexts), [&palette](auto const& pair) {
            return Contrast(palette.color(pair.first), palette.color(pair.second)) >= kHighContrast;
        }))
        return ThemeKind::HighContrast;
    return palette.color(QPalette::WindowText).lightness() >
                   palette.color(QPalette::Window).lightness()
               ? ThemeKind::Dark
               : ThemeKind::Light;
}

void FollowPalette(QPalette const& palette) {
    using moxui::skins::ThemeProvider;
    auto const kind = ThemeOf(palette);
    if (ThemeProvider::Get().GetKind() != kind) ThemeProvider::SetTheme(kind);
}

}  // namespace quillohostkit
