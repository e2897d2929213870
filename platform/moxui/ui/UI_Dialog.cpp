#include "moxui/ui/UI_Dialog.h"

#include <QAbstractButton>
#include <QMetaObject>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/widgets/ViewWidget.h"
#include "moxui/backend/detail/windows/DialogWindow.h"
#include "moxui/controls/UI_Button.h"

namespace moxui::ui {
namespace {

using backend::DialogWindow;
using backend::RootWidget;
using controls::UI_Button;

class DialogContainer : public OS_ViewContainer {
public:
    DialogContainer() : OS_ViewContainer(backend::MakePeer<RootWidget>()) {
        GetPeer().GetWidget()->setAutoFillBackground(true);
    }
};

DialogWindow* WindowOf(UI_Dialog const& dialog) {
    return dialog.GetPeer().GetWidgetAs<DialogWindow>();
}

QWidget* WindowOf(OS_Window const& window) {
    auto const node = window.GetNode();
    auto const* const widget = node ? node->GetPeer().GetWidget() : nullptr;
    return widget ? widget->window() : nullptr;
}

}  // namespace

struct UI_Dialog::State {
    boost::intrusive_ptr<OS_ViewContainer> container;
    boost::intrusive_ptr<UI_Button> cancel;
    boost::intrusive_ptr<UI_Button> commit;
    bool centred = false;
    bool running = false;  // in ShowModal
    unsigned showings = 0;
    Result result = Result::Closed;
};

UI_Dialog::UI_Dialog(drawbot::SupplierInterface const*, moxcore::string::UTF16String const& title,
                     OS_Window const& parent, bool modal)
    : UI_SubView(backend::MakePeer<DialogWindow>(WindowOf(parent))),
      state(std::make_unique<State>()) {
    state->container = new DialogContainer;
    ChildPushBack(state->container);
    state->container->UI_Show(true);

    auto* const window = WindowOf(*this);
    window->setWindowTitle(backend::ToQString(title));
    window->setModal(modal);
    window->onCancel = [this] { return PressCancel(); };
    window->onEnter = [this] { PressCommit(); };
    window->onShown = [this](bool shown) {
        UI_SubView::UI_Show(shown);
        if (shown) ++state->showings;
        auto* const content = state->container->GetPeer().GetWidgetAs<RootWidget>();
        if (shown && content && !content->window()->focusWidget())
            content->FocusFirst(Qt::ActiveWindowFocusReason);
    };
}

UI_Dialog::~UI_Dialog() = default;

boost::intrusive_ptr<OS_ViewContainer> UI_Dialog::GetContentContainer() const {
    return state->container;
}

void UI_Dialog::SetButtons(boost::intrusive_ptr<UI_Button> const& cancel,
                           boost::intrusive_ptr<UI_Button> const& commit) {
    if (state->commit) state->commit->SetDefaultButton(false);
    state->cancel = cancel;
    state->commit = commit;
    if (commit) commit->SetDefaultButton(true);

    moxcore::utility::RefCountedWeakPtr<UI_Dialog> const weak(this);
    auto const listen = [&](boost::intrusive_ptr<UI_Button> const& button, Result result) {
        if (!button) return;
        button->NotifyWhenChanged([weak, which = button.get(), result](Message*) {
            if (auto const dialog = weak.Lock()) dialog->EndWith(which, result);
        });
    };
    listen(cancel, Result::Cancelled);
    listen(commit, Result::Committed);
}

void UI_Dialog::Position() {
    state->centred = true;
    if (auto* const window = WindowOf(*this)) window->Centre();
}

void UI_Dialog::SetContentSize(float width, float height) {
    state->container->UI_SetLocalRectF({0, 0, width, height});
    auto* const window = WindowOf(*this);
    if (!window) return;
    auto const size = backend::ToWholeUnits({0, 0, width, height}).size();
    window->setFixedSize(size);
    window->resize(size);
    if (state->centred && !window->isVisible()) window->Centre();
    auto const place = backend::FromQRectF(QRectF(window->geometry()));
    UI_SubView::UI_SetLocalRectF({place.x, place.y, width, height});
}

void UI_Dialog::UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) {
    SetContentSize(rect.width, rect.height);
}

void UI_Dialog::Relayout() {
    state->container->UI_SizeChanged(state->container->UI_GetLocalRectF(false));
    state->container->UI_Invalidate();
}

UI_Dialog::Result UI_Dialog::ShowModal() {
    auto* const window = WindowOf(*this);
    if (!window || state->running) return Result::Closed;
    boost::intrusive_ptr<UI_Dialog> const alive(this);
    window->hide();  // one that is shown does not become modal
    state->running = true;
    state->result = Result::Closed;
    window->exec();
    state->running = false;
    return state->result;
}

void UI_Dialog::UI_Show(bool show) {
    auto* const window = WindowOf(*this);
    if (!window) return;
    if (show)
        window->show();
    else
        Close();
}

void UI_Dialog::Close() {
    if (auto* const window = WindowOf(*this)) window->done(QDialog::Rejected);
}

drawbot::SupplierInterface const* UI_Dialog::UI_GetDrawSupplier() const {
    return &backend::QtSupplier();
}

void UI_Dialog::EndWith(UI_Button* button, Result result) {
    auto* const window = WindowOf(*this);
    if (!window || (button != state->cancel.get() && button != state->commit.get())) return;
    // Who heard of the press first has refused it.
    if (result == Result::Committed && !button->UI_IsEnabled()) return;
    state->result = result;
    // Queued: other handlers of the press may run after this one.
    auto const end = [this, window, showing = state->showings] {
        if (window->node && showing == state->showings) window->done(QDialog::Rejected);
    };
    QMetaObject::invokeMethod(window, end, Qt::QueuedConnection);
}

bool UI_Dialog::PressCancel() {
    auto const cancel = state->cancel;
    if (!cancel || !cancel->UI_IsEnabled()) return false;
    cancel->Press();
    return true;
}

void UI_Dialog::PressCommit() {
    auto const commit = state->commit;
    auto const* const window = WindowOf(*this);
    if (!commit || !window || !commit->UI_IsEnabled()) return;
    auto* const focused = qobject_cast<QAbstractButton*>(window->focusWidget());
    if (!focused || focused == commit->GetPeer().GetWidget()) commit->Press();
}

}  // namespace moxui::ui
