#include "moxui/backend/detail/tree/TreeOpener.h"

#include <chrono>

#include "moxui/backend/detail/tree/TreeWidget.h"

namespace moxui::backend {
namespace {

/// A quarter of a screen's frame.
constexpr std::chrono::milliseconds kSlice{4};
/// After how many rows the clock is looked at.
constexpr int kRowsPerLook = 64;
constexpr int kMostAtOnce = 2000;

}  // namespace

void TreeOpener::Start(TreeModel::Row& row) {
    top = &row;
    next = TreeModel::NextBelow(row, row);
    GoOn();
}

void TreeOpener::GoOn() {
    // A timer and no posted event: what the user does in the meantime comes first.
    if (IsOpening()) timer.start(0, this);
}

void TreeOpener::Stop() {
    timer.stop();
    top = nullptr;
    next = nullptr;
}

void TreeOpener::timerEvent(QTimerEvent*) {
    tree.ShowAppended();
    auto const end = std::chrono::steady_clock::now() + kSlice;
    int opened = 0;
    for (int i = 1; next && opened < kMostAtOnce; ++i) {
        if (i % kRowsPerLook == 0 && std::chrono::steady_clock::now() >= end) break;
        auto& row = *next;
        if (row.GetChildCount() > 0 && !TreeModel::IsOpen(row)) {
            // While a layout is due anyway, the view only takes note of what is open.
            if (opened++ == 0) tree.ScheduleLayout();
            tree.Open(row);
        }
        next = TreeModel::NextBelow(*top, row);
    }
    if (!next)
        Stop();
    else if (opened > 0)
        timer.stop();
}

}  // namespace moxui::backend
