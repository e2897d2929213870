#include "moxui/controls/UI_MultiColumnTreeRow.h"

namespace moxui::controls {

boost::intrusive_ptr<UI_MultiColumnTreeRow> UI_MultiColumnTreeRow::GetParentRow() const {
    bool const isAtTheTop = level <= 1;
    return isAtTheTop ? nullptr : parent;
}

boost::intrusive_ptr<UI_MultiColumnTreeRow> UI_MultiColumnTreeRow::GetChildRow(
    std::size_t index) const {
    return index < childCount ? ChildAt(index) : nullptr;
}

UI_MultiColumnTreeRow* UI_MultiColumnTreeRow::ChildAt(std::size_t index) const {
    if (index >= childrenByPlace.size()) {
        if (childrenByPlace.empty()) childrenByPlace.reserve(childCount);
        auto* child = childrenByPlace.empty() ? firstChild : childrenByPlace.back()->nextSibling;
        for (; child; child = child->nextSibling)
            childrenByPlace.push_back(child);
    }
    return childrenByPlace[index];
}

void UI_MultiColumnTreeRow::Detach() {
    parent = firstChild = lastChild = nextSibling = nullptr;
    childCount = 0;
    childrenByPlace.clear();
    level = shownChildCount = 0;
    isOpen = false;
}

}  // namespace moxui::controls
