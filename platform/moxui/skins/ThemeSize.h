#pragma once

/// The sizes of a theme, in units that do not depend on the screen's scale.
namespace moxui::skins::ThemeSize {

inline constexpr int kControlHeight = 20;   // a button, a drop-down menu's button
inline constexpr int kControlPadding = 8;   // between such a button's edge and its text
inline constexpr int kCornerRadius = 3;     // of a button, of a row's highlight
inline constexpr int kRowHeight = 20;       // of a tree
inline constexpr int kRowIndentation = 16;  // of a tree's row from its parent's; holds the chevron
inline constexpr int kMenuRowHeight = 24;   // of a menu
inline constexpr int kMenuIcon = 16;        // the largest side of an entry's picture
inline constexpr int kChevron = 8;          // the longer side of the arrow that opens something
inline constexpr int kScrollBar = 8;        // across
inline constexpr int kShortestThumb = 24;   // of a scroll bar, along it
inline constexpr int kScrollStep = 20;      // of one press of an arrow, a third of a wheel's step

}  // namespace moxui::skins::ThemeSize
