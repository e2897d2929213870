#include "support/TestWindow.h"

#include <QApplication>
#include <QPixmap>
#include <QTest>

#include "moxcore/threads/MainThread.h"
#include "moxui/backend/HostWidget.h"

namespace testsupport {

TestWindow::TestWindow(int width, int height) {
    widget.resize(width, height);
    container = moxui::backend::FillWidget(&widget);
    widget.show();
    widget.activateWindow();
    // Under a window system the focus comes when it pleases, and no sooner does a key find a view.
    static_cast<void>(QTest::qWaitForWindowActive(&widget));
    RunEvents();
}

TestWindow::~TestWindow() {
    // Which buttons are down is the whole program's state: the next window starts with none.
    if (QGuiApplication::mouseButtons() != Qt::NoButton)
        QTest::mouseRelease(&widget, Qt::LeftButton);
    container.reset();
    RunEvents();
}

void TestWindow::Add(boost::intrusive_ptr<moxui::ui::UI_SubView> const& view,
                     moxcore::geom::RectT<float> const& rect) {
    container->ChildPushBack(view);
    view->UI_SetLocalRectF(rect);
    view->UI_Show(true);
    RunEvents();
}

QWidget& WidgetOf(moxui::ui::UI_Node const& node) {
    return *moxui::backend::GetWidget(node);
}

void RunEvents() {
    do {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    } while (moxcore::threads::MainThread::RunPending() > 0);
}

QImage PictureOf(QWidget& widget) {
    return widget.grab().toImage();
}

}  // namespace testsupport
