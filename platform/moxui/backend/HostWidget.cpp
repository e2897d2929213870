#include "moxui/backend/HostWidget.h"

#include <QAccessible>
#include <QApplication>

#include "moxcore/threads/MainThread.h"
#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/widgets/CallFromQt.h"
#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/backend/detail/widgets/ViewWidget.h"

namespace moxui::backend {
namespace {

class HostNode : public ui::UI_Node {
public:
    explicit HostNode(QWidget* widget)
        : UI_Node(std::make_unique<Peer>(widget, Peer::Ownership::Host)) {}

    drawbot::SupplierInterface const* UI_GetDrawSupplier() const override { return &QtSupplier(); }
};

/// Has a container follow the size of the host's widget. A part of the container's own widget,
/// which outlives the container by a moment.
class ResizeWatcher : public QObject {
public:
    ResizeWatcher(QWidget& hosts, RootWidget& own) : QObject(&own), own(own) {
        hosts.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Resize && own.node)
            CallFromQt([&] {
                static_cast<ui::OS_ViewContainer*>(own.node)->UI_SetLocalRectF(
                    FromQRectF(QRectF(static_cast<QWidget*>(watched)->rect())));
            });
        return QObject::eventFilter(watched, event);
    }

private:
    RootWidget& own;
};

/// Keeps the size of the widget that it fills.
class FillingContainer : public ui::OS_ViewContainer {
public:
    explicit FillingContainer(QWidget* widget) : OS_ViewContainer(MakePeer<RootWidget>()) {
        auto* const own = GetPeer().GetWidgetAs<RootWidget>();
        own->setParent(widget);
        own->setAutoFillBackground(true);
        UI_SetLocalRectF(FromQRectF(QRectF(widget->rect())));
        UI_Show(true);
        new ResizeWatcher(*widget, *own);
    }
};

boost::intrusive_ptr<ui::UI_Node>& MainTopLevelWindow() {
    static boost::intrusive_ptr<ui::UI_Node> node;
    return node;
}

}  // namespace

boost::intrusive_ptr<ui::UI_Node> WrapWidget(QWidget* widget) {
    return new HostNode(widget);
}

boost::intrusive_ptr<ui::OS_ViewContainer> FillWidget(QWidget* widget) {
    return new FillingContainer(widget);
}

QWidget* GetWidget(ui::UI_Node const& node) {
    return node.GetPeer().GetWidget();
}

void Announce(QWidget& widget) {
    for (auto const type : {QAccessible::ObjectShow, QAccessible::Alert}) {
        QAccessibleEvent event(&widget, type);
        QAccessible::updateAccessibility(&event);
    }
}

void SetMainTopLevelWindow(QWidget* window) {
    MainTopLevelWindow() = window ? WrapWidget(window) : nullptr;
}

void RunMainThreadQueueInQt() {
    using moxcore::threads::MainThread;
    MainThread::SetWakeUpHook([] {
        // Posted to the application: it is handled by whichever loop runs, a modal dialog's too.
        if (auto* const application = QCoreApplication::instance())
            QMetaObject::invokeMethod(
                application, [] { MainThread::RunPending(); }, Qt::QueuedConnection);
    });
    QObject::connect(QCoreApplication::instance(), &QObject::destroyed,
                     [] { MainThread::SetWakeUpHook(nullptr); });
}

}  // namespace moxui::backend

namespace moxui::ui {

OS_Window GetMainTopLevelWindow() {
    auto* const node = backend::MainTopLevelWindow().get();
    return OS_Window(node && node->GetPeer().GetWidget() ? node : nullptr);
}

}  // namespace moxui::ui
