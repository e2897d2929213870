#include "quillohostkit/sharing/PaletteTheme.h"

#include "moxui/skins/ThemeProvider.h"

namespace quillohostkit {

void FollowPalette(QPalette const& palette) {
    using moxui::skins::ThemeKind;
    using moxui::skins::ThemeProvider;
    auto const kind = palette.color(QPalette::WindowText).lightness() >
                              palette.color(QPalette::Window).lightness()
                          ? ThemeKind::Dark
                          : ThemeKind::Light;
    if (ThemeProvider::Get().GetKind() != kind) ThemeProvider::SetTheme(kind);
}

}  // namespace quillohostkit
