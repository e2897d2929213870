#include "moxui/backend/detail/TreeOpener.h"

#include <utility>

#include "moxui/backend/detail/TreeWidget.h"

namespace moxui::backend {
namespace {

constexpr int kRowsAtOnce = 2000;

}  // namespace

void TreeOpener::Start(TreeModel::Row& row) {
    top = &row;
    next = TreeModel::NextBelow(row, row);
    // A timer and no posted event: what the user does in the meantime comes first.
    timer.start(0, this);
}

void TreeOpener::Stop() {
    timer.stop();
    top = nullptr;
    next = nullptr;
}

void TreeOpener::timerEvent(QTimerEvent*) {
    tree.ShowAppended();
    bool hasOpened = false;
    for (int i = 0; next && i < kRowsAtOnce; ++i) {
        auto& row = *next;
        if (row.GetChildCount() > 0 && !TreeModel::IsOpen(row)) {
            // While a layout is due anyway, the view only takes note of what is open.
            if (!std::exchange(hasOpened, true)) tree.ScheduleLayout();
            tree.Open(row);
        }
        next = TreeModel::NextBelow(*top, row);
    }
    if (!next) Stop();
}

}  // namespace moxui::backend
