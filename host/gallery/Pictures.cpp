#include "host/gallery/Pictures.h"

#include <QApplication>
#include <QDir>
#include <QMouseEvent>
#include <QPixmap>
#include <cstdio>

#include "host/gallery/Sheet.h"
#include "host/gallery/Windows.h"
#include "moxcore/string/Conversions.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/controls/UI_PicturePopup.h"
#include "moxui/sharedui/UI_ToastManager.h"

namespace quillogallery {
namespace {

using namespace moxui;

void RunEvents() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// A window of the host's, as long as it lives.
struct HostWindow {
    HostWindow(int width, int height) {
        widget.resize(width, height);
        container = backend::FillWidget(&widget);
        widget.show();
        widget.activateWindow();
        RunEvents();
    }
    ~HostWindow() {
        container.reset();
        RunEvents();
    }

    QWidget widget;
    boost::intrusive_ptr<ui::OS_ViewContainer> container;
};

QImage PictureOf(Kind const& kind) {
    boost::intrusive_ptr<Sheet> const sheet(new Sheet(kind));
    auto const size = sheet->UI_GetLocalRectF(false);
    HostWindow window(static_cast<int>(size.width), static_cast<int>(size.height));
    window.container->ChildPushBack(sheet);
    RunEvents();
    sheet->BringIntoStates();
    return sheet->Picture();
}

QImage PictureOfPopup() {
    HostWindow window(400, 300);
    auto const anchor = backend::WrapWidget(&window.widget);
    auto const popup = MakePopup(anchor);
    Show(*popup, *anchor);
    RunEvents();
    return backend::GetWidget(*popup)->grab().toImage();
}

QImage PictureOfDialog() {
    HostWindow window(400, 300);
    auto const dialog = MakeDialog(*window.container);
    dialog->UI_Show(true);
    RunEvents();
    return backend::GetWidget(*dialog)->grab().toImage();
}

QImage PictureOfToast() {
    HostWindow window(400, 300);
    sharedui::UI_ToastManager::GetDefaultInstance()->DisplayToastMessage(
        window.container->UI_GetOSWindow(),
        moxcore::string::UTF8to16("The link was copied to the clipboard"), 1, 0);
    RunEvents();
    for (auto* const widget : QApplication::topLevelWidgets())
        if (widget->isVisible() && widget->windowType() == Qt::ToolTip)
            return widget->grab().toImage();
    return {};
}

/// The menu that a click on `specimen` opens.
QImage PictureOfMenu(Specimen const& specimen) {
    HostWindow window(400, 300);
    auto const view = specimen.make();
    window.container->ChildPushBack(view);
    view->UI_SetLocalRectF({20, 20, 160, 20});
    view->UI_Show(true);
    RunEvents();
    auto* const widget = backend::GetWidget(*view);
    QPointF const here = widget->rect().center();
    for (auto const type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, here, widget->mapToGlobal(here), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                          Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
    }
    RunEvents();
    auto* const menu = QApplication::activePopupWidget();
    if (!menu) return {};
    auto const picture = menu->grab().toImage();
    menu->close();
    return picture;
}

}  // namespace

bool WritePictures(QString const& directory, QString const& suffix,
                   std::vector<Kind> const& kinds) {
    auto const write = [&](QString const& name, QImage const& picture) {
        auto const path = QDir(directory).filePath(name + suffix + ".png");
        if (QDir().mkpath(directory) && picture.save(path)) return true;
        std::fprintf(stderr, "quillo-gallery: cannot write %s\n", qPrintable(path));
        return false;
    };
    for (auto const& kind : kinds)
        if (!write(QString::fromStdString(kind.name), PictureOf(kind))) return false;
    auto const menus = Menus().specimens;
    return write("popup", PictureOfPopup()) && write("dialog", PictureOfDialog()) &&
           write("toast", PictureOfToast()) && write("menu-choice", PictureOfMenu(menus.front())) &&
           write("menu-commands", PictureOfMenu(menus.back()));
}

}  // namespace quillogallery
