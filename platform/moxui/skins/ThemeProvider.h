#pragma once

#include <string>

#include "moxui/Export.h"
#include "moxui/drawbot/ColorRGBA.h"

namespace moxui::skins {

enum class ThemeKind {
    Dark,
    Light,
    /// White on black, with a border around every button and no colours of a view's own: every text
    /// has a contrast of 7 at least, every line one of 4.5.
    HighContrast,
};

/// The greys of a theme, from the ground (0) toward the text's.
enum class HalcynGrayColor { Level0, Level1, Level2, Level3, Level4, Level5 };

/// The keys of a theme's colours. A control takes its colours by key, so that one control can be
/// given others for itself alone (ThemeClient::SetCustomThemeColor).
namespace ThemeColor {
inline constexpr int kText = 0;                 // text on a popup's ground
inline constexpr int kDisabledText = 1;         // text of a control that cannot be used
inline constexpr int kLink = 2;                 // text that leads elsewhere
inline constexpr int kGround = 3;               // a popup's ground
inline constexpr int kHighlight = 4;            // behind a row that is chosen or under the pointer
inline constexpr int kFocus = 5;                // around what has the keyboard's focus
inline constexpr int kControl = 6;              // a button's ground
inline constexpr int kControlHovered = 7;       // ... under the pointer
inline constexpr int kControlPressed = 8;       // ... pressed
inline constexpr int kControlBorder = 9;        // around a button, a menu or a field
inline constexpr int kProgress = 10;            // the done part of a progress bar
inline constexpr int kIcon = 11;                // icons of one colour
inline constexpr int kSelectedText = 12;        // text on the highlight
inline constexpr int kShade = 13;               // laid over what is pressed
inline constexpr int kControlDisabled = 14;     // a button's ground, of one that cannot be used
inline constexpr int kButtonText = 5000015;     // a text button's label
inline constexpr int kButtonGround = 5000016;   // a text button's ground
inline constexpr int kButtonHovered = 5000017;  // ... under the pointer
}  // namespace ThemeColor

/// The sizes of a theme, in units.
enum class ThemeSize {
    ControlHeight,       // of a button
    ControlPadding,      // between a button's sides and what it shows
    ControlGap,          // between a picture and the text beside it
    CornerRadius,        // of a control's frame
    LineWidth,           // of a frame or a divider
    FocusLine,           // of the ring around what has the focus
    RowHeight,           // of a tree
    RowMargin,           // above what a tree's cells show
    RowIndentation,      // of a tree's row from its parent's; room for the row's arrow
    MenuRowHeight,       // of a menu
    MenuPadding,         // between a menu's sides, or those of its button, and what it shows
    MenuPicture,         // the longest side of an entry's picture
    Chevron,             // the longer side of the arrow that opens something
    ScrollBar,           // across
    ShortestThumb,       // of a scroll bar, along it
    ScrollStep,          // of one press of an arrow
    ToastText,           // across, of the longest line of a notice
    ToastPaddingAcross,  // between a notice's sides and its text
    ToastPaddingDown,    // between a notice's top and foot and its text
    ToastAboveFoot,      // between a notice and the foot of the window that it is shown over
};

/// Every colour, font and size of the toolkit. Main thread.
class MOXUI_API ThemeProvider {
public:
    /// The theme in force. The object stays; what it answers changes with SetTheme.
    [[nodiscard]] static ThemeProvider const& Get();

    /// Sets the theme: every view of the process is notified (UI_ThemeChanged) and redrawn. Dark
    /// until the first call.
    static void SetTheme(ThemeKind kind);

    /// The theme in force.
    [[nodiscard]] ThemeKind GetKind() const;
    /// The colour of a key of ThemeColor; magenta for a key that does not exist.
    [[nodiscard]] drawbot::ColorRGBA GetColor(int key) const;
    /// The gray of that level in the theme in force.
    [[nodiscard]] drawbot::ColorRGBA GetGray(HalcynGrayColor level) const;

    /// `index` 0, the one face there is.
    [[nodiscard]] std::string GetFontName(int index) const;
    /// In units; `index` 0, the one size there is.
    [[nodiscard]] float GetFontSize(int index) const;
    /// In units that do not depend on the screen's scale.
    [[nodiscard]] float GetSize(ThemeSize size) const;

private:
    ThemeProvider() = default;
};

/// `name`, or the theme's own face where the system has no face of that name.
[[nodiscard]] MOXUI_API std::string ValidateFontName(std::string const& name);

/// Whether the skin draws the larger, rounder icons. Always.
[[nodiscard]] MOXUI_API bool IsRunningV7OrBeyond();

namespace utilities {

[[nodiscard]] MOXUI_API drawbot::ColorRGBA GetHalcynGrayColor(ThemeProvider const& theme,
                                                              HalcynGrayColor level);

/// `from` moved toward `to` by `part` (0 to 1), each of the four components for itself.
[[nodiscard]] MOXUI_API drawbot::ColorRGBA Blend(drawbot::ColorRGBA const& from,
                                                 drawbot::ColorRGBA const& to, float part);

}  // namespace utilities
}  // namespace moxui::skins
