// What assistive tools are told of the kit's own widgets, and the theme for those who need
// contrast.

#include <gtest/gtest.h>

#include <QAccessible>
#include <utility>
#include <vector>

#include "quillohostkit/ShareStatusLabel.h"
#include "quillohostkit/sharing/PaletteTheme.h"

namespace quillohostkit {
namespace {

TEST(Accessibility, AStatusLabelIsAnAlertThatSaysItsMessage) {
    QWidget window;
    ShareController controller(&window);
    ShareStatusLabel label(&controller);
    label.showMessage("Shared.");
    std::vector<std::pair<QAccessible::Role, QString>> told;
    for (auto* const child : label.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        auto* const interface = QAccessible::queryAccessibleInterface(child);
        told.emplace_back(interface->role(), interface->text(QAccessible::Name));
    }
    std::vector<std::pair<QAccessible::Role, QString>> const expected{
        {QAccessible::AlertMessage, "Message: Shared."},
        {QAccessible::StaticText, "Share"},
        {QAccessible::ProgressBar, "Progress of the share"},
        {QAccessible::Button, "Cancel the Share"}};
    EXPECT_EQ(told, expected);
}

TEST(Accessibility, ThePaletteChoosesTheTheme) {
    using moxui::skins::ThemeKind;
    struct Case {
        char const *text, *ground, *button;
        ThemeKind kind;
    };
    for (auto const& [text, ground, button, kind] :
         std::vector<Case>{{"#000000", "#efefef", "#efefef", ThemeKind::Light},
                           {"#e4e4e4", "#242424", "#333333", ThemeKind::Dark},
                           {"#ffffff", "#000000", "#000000", ThemeKind::HighContrast},
                           {"#000000", "#ffffff", "#ffffff", ThemeKind::HighContrast},
                           {"#ffff00", "#000000", "#000000", ThemeKind::HighContrast},
                           {"#ffffff", "#000000", "#333333", ThemeKind::Dark}}) {
        QPalette palette;
        for (auto const role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            palette.setColor(role, QColor(text));
        for (auto const role : {QPalette::Window, QPalette::Base})
            palette.setColor(role, QColor(ground));
        palette.setColor(QPalette::Button, QColor(button));
        EXPECT_EQ(ThemeOf(palette), kind) << text << " on " << ground;
    }
}

}  // namespace
}  // namespace quillohostkit
