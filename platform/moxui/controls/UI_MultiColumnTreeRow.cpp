#include "moxui/controls/UI_MultiColumnTreeRow.h"

#include <memory_resource>

#include "moxcore/utility/NoDestructor.h"

namespace moxui::controls {
namespace {

/// Keeps what it has taken, for the next tree.
std::pmr::memory_resource& RowMemory() {
#ifdef __SANITIZE_ADDRESS__
    return *std::pmr::new_delete_resource();  // a pool would hide what is used after its end
#else
    // Never destroyed: a row may be held until the process ends.
    static moxcore::utility::NoDestructor<std::pmr::unsynchronized_pool_resource> memory;
    return *memory;
#endif
}

}  // namespace

void* UI_MultiColumnTreeRow::operator new(std::size_t size) {
    return RowMemory().allocate(size, alignof(UI_MultiColumnTreeRow));
}

void UI_MultiColumnTreeRow::operator delete(void* memory, std::size_t size) noexcept {
    RowMemory().deallocate(memory, size, alignof(UI_MultiColumnTreeRow));
}

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
