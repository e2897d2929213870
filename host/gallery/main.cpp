// quillo-gallery: every control of the toolkit in every state, for who works on the toolkit. On the
// screen, or as pictures.

#include <QApplication>
#include <QCommandLineParser>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "host/gallery/LiveWindow.h"
#include "host/gallery/Pictures.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/skins/ThemeProvider.h"
#include "moxui/utility/ResourceManager.h"

namespace quillogallery {

moxui::controls::PictureSupplyFunction Icon(std::string const& name) {
    using namespace moxui;
    return std::make_shared<std::function<void(ui::ConstMessage*)>>(
        ui::BindNonMemberConstMessageFunction<controls::UI_PictureSupplyMessage>(
            [name](controls::UI_PictureSupplyMessage* message) {
                message->SetIcon(name, &utility::GetResourceManager(), true, nullptr);
            }));
}

namespace {

/// The argument after `option`, or null: what Qt has to know before the application is made.
char const* Early(int count, char** arguments, char const* option) {
    for (int i = 1; i + 1 < count; ++i)
        if (std::string_view(arguments[i]) == option) return arguments[i + 1];
    return nullptr;
}

int Run(int count, char** arguments) {
    if (auto const* const scale = Early(count, arguments, "--scale"))
        qputenv("QT_SCALE_FACTOR", scale);
    if (Early(count, arguments, "--png") && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(count, arguments);
    moxui::backend::RunMainThreadQueueInQt();

    QCommandLineParser options;
    options.setApplicationDescription("Shows every control of the toolkit in every state.");
    options.addHelpOption();
    QCommandLineOption const png("png", "Write pictures into <folder> instead.", "folder");
    QCommandLineOption const theme("theme", "dark (default) or light.", "theme", "dark");
    QCommandLineOption const scale("scale", "The screen's scale, 1 (default), 1.5 or 2.", "scale",
                                   "1");
    options.addOptions({png, theme, scale});
    options.process(application);

    auto const wanted = options.value(theme);
    bool scaleIsNumber = false;
    options.value(scale).toDouble(&scaleIsNumber);
    if ((wanted != "dark" && wanted != "light") || !scaleIsNumber ||
        !options.positionalArguments().isEmpty()) {
        std::fputs(qPrintable(options.helpText()), stderr);
        return 2;
    }
    using moxui::skins::ThemeKind;
    moxui::skins::ThemeProvider::SetTheme(wanted == "dark" ? ThemeKind::Dark : ThemeKind::Light);

    std::vector<Kind> const kinds{Texts(), Buttons(), Menus(), Lists()};
    if (options.isSet(png))
        return WritePictures(options.value(png), "-" + wanted + "@" + options.value(scale), kinds)
                   ? EXIT_SUCCESS
                   : EXIT_FAILURE;
    LiveWindow window(kinds);
    window.show();
    return QApplication::exec();
}

}  // namespace
}  // namespace quillogallery

int main(int count, char** arguments) {
    return quillogallery::Run(count, arguments);
}
