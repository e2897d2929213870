#include "moxui/sharedui/UI_ToastManager.h"

#include <QApplication>
#include <QPointer>
#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxcore/threads/AsyncExecutor.h"
#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/backend/detail/windows/ToastWindow.h"

namespace moxui::sharedui {
namespace {

/// The one toast window, made when first needed.
QPointer<backend::ToastWindow> toastWindow;

backend::ToastWindow& TheWindow() {
    if (!toastWindow) {
        toastWindow = new backend::ToastWindow;
        static bool const endsWithApplication = [] {
            qAddPostRoutine([] { delete toastWindow; });
            return true;
        }();
        static_cast<void>(endsWithApplication);
    }
    return *toastWindow;
}

QWidget const* WidgetOf(ui::OS_Window const& window) {
    auto const node = window.GetNode();
    auto const* const widget = node ? node->GetPeer().GetWidget() : nullptr;
    return widget && widget->isVisible() ? widget->window() : QApplication::activeWindow();
}

std::uint32_t Milliseconds(double seconds) {
    // Also for what is no number.
    if (!(seconds > 0)) seconds = kToastManager_DefaultDurationInSeconds;
    return static_cast<std::uint32_t>(
        std::min(seconds * 1000, double(std::numeric_limits<std::uint32_t>::max())));
}

}  // namespace

struct UI_ToastManager::State {
    struct Toast {
        ui::OS_Window window;
        moxcore::string::UTF16String text;
        double seconds;
        int priority;
    };

    void Show(Toast const& toast) {
        shownPriority = toast.priority;
        TheWindow().ShowOver(WidgetOf(toast.window), backend::ToQString(toast.text));
        auto const end = [this, turn = ++turns] {
            moxcore::threads::AsyncCallFromMainThread([this, turn] { End(turn); }, 0);
        };
        moxcore::threads::GetIOBoundExecutor()->CallAsyncDelayed(end, Milliseconds(toast.seconds));
    }

    /// The time of the toast that was the `turn`th to be shown is over.
    void End(unsigned turn) {
        if (turn != turns) return;  // another has taken its place
        shownPriority.reset();
        if (toastWindow) toastWindow->hide();
        if (waiting.empty()) return;
        auto const next = waiting.front();
        waiting.erase(waiting.begin());
        Show(next);
    }

    std::vector<Toast> waiting;  // the highest priority first, equal ones as they came
    std::optional<int> shownPriority;
    unsigned turns = 0;
};

UI_ToastManager::UI_ToastManager() : state(std::make_unique<State>()) {}

UI_ToastManager::~UI_ToastManager() = default;

UI_ToastManager* UI_ToastManager::GetDefaultInstance() {
    // Never destroyed: a toast's time may end while the process does.
    static UI_ToastManager* const manager = new UI_ToastManager;
    return manager;
}

void UI_ToastManager::DisplayToastMessage(ui::OS_Window const& window,
                                          moxcore::string::UTF16String const& text, double seconds,
                                          int priority) {
    State::Toast const toast{window, text, seconds, priority};
    if (!state->shownPriority || priority >= *state->shownPriority) return state->Show(toast);
    auto const place =
        std::upper_bound(state->waiting.begin(), state->waiting.end(), priority,
                         [](int value, auto const& other) { return value > other.priority; });
    state->waiting.insert(place, toast);
}

}  // namespace moxui::sharedui
