#pragma once

#include <QFont>
#include <QPalette>
#include <QWidget>
#include <string>

#include "moxui/skins/ThemeProvider.h"

namespace moxui::ui {
class OS_ViewContainer;
class UI_Node;
}  // namespace moxui::ui

namespace moxui::backend {

/// Of the picture of what cannot be used.
inline constexpr qreal kOpacityOfDisabledPicture = 0.5;

/// Counts the changes of the theme, from 1.
[[nodiscard]] unsigned ThemeGeneration();

[[nodiscard]] QPalette ThemePalette();

/// Puts the theme's palette and font on `widget`, whose children take them over from it, and not on
/// the application, which is the host's.
void ApplyTheme(QWidget& widget);

/// Registers a window: its views are notified of changes of the theme until it is removed.
void AddThemedWindow(ui::OS_ViewContainer& container);
void RemoveThemedWindow(ui::OS_ViewContainer& container);

/// Tells `node` and what is below it that another theme is in force, unless they know.
void TellOfTheme(ui::UI_Node& node);

/// A size of the theme for what counts in whole units.
[[nodiscard]] int WholeSize(skins::ThemeSize size);

/// The theme's font in the given style ("" or "Bold"), at `factor` times its size.
[[nodiscard]] QFont ThemeFont(std::string const& style, float factor = 1);

/// The theme's font where `name` is a style ("", "Regular" or "Bold"); otherwise the face `name` in
/// the theme's size, or the theme's own where the system has none of that name.
[[nodiscard]] QFont NamedFont(std::string const& name);

}  // namespace moxui::backend
