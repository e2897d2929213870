#include "host/editor/AppTheme.h"

#include <QApplication>
#include <QColor>
#include <QPalette>

#include "moxui/skins/ThemeProvider.h"
#include "quillohostkit/sharing/PaletteTheme.h"

namespace quillohost::editor {
namespace {

using moxui::skins::HalcynGrayColor;
using moxui::skins::ThemeKind;
using moxui::skins::ThemeProvider;
namespace ThemeColor = moxui::skins::ThemeColor;

QColor ToQColor(moxui::drawbot::ColorRGBA const& color) {
    return QColor::fromRgbF(color.red, color.green, color.blue, color.alpha);
}

/// The theme that goes with the desktop's colours.
ThemeKind SystemTheme() {
    QApplication::setPalette(QPalette());
    return quillohostkit::ThemeOf(QApplication::palette());
}

QPalette PaletteOf(ThemeProvider const& theme) {
    auto const color = [&theme](int key) { return ToQColor(theme.GetColor(key)); };
    auto const gray = [&theme](HalcynGrayColor level) { return ToQColor(theme.GetGray(level)); };
    QPalette palette(color(ThemeColor::kControl), gray(HalcynGrayColor::Level2));
    palette.setColor(QPalette::Base, gray(HalcynGrayColor::Level1));
    palette.setColor(QPalette::AlternateBase, gray(HalcynGrayColor::Level2));
    palette.setColor(QPalette::ToolTipBase, gray(HalcynGrayColor::Level1));
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                      QPalette::ToolTipText, QPalette::BrightText})
        palette.setColor(role, color(ThemeColor::kText));
    palette.setColor(QPalette::PlaceholderText, color(ThemeColor::kDisabledText));
    palette.setColor(QPalette::Highlight, color(ThemeColor::kFocus));
    palette.setColor(QPalette::HighlightedText, gray(HalcynGrayColor::Level0));
    palette.setColor(QPalette::Mid, gray(HalcynGrayColor::Level5));
    palette.setColor(QPalette::Link, color(ThemeColor::kLink));
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, color(ThemeColor::kDisabledText));
    return palette;
}

}  // namespace

void UseTheme(ThemeChoice choice) {
    ThemeKind const kind = choice == ThemeChoice::System ? SystemTheme()
                           : choice == ThemeChoice::Dark ? ThemeKind::Dark
                                                         : ThemeKind::Light;
    ThemeProvider::SetTheme(kind);
    QApplication::setPalette(PaletteOf(ThemeProvider::Get()));
}

}  // namespace quillohost::editor
