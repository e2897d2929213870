#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#include <cstddef>
#include <vector>

#include "moxui/Export.h"

namespace moxui::backend {
class TreeModel;
}

namespace moxui::controls {

/// One row of a UI_MultiColumnTree, which makes it. Held by boost::intrusive_ptr, which may be a
/// key of an ordered map. A row that its tree has deleted has no parent and no children. Main
/// thread, references included.
///
/// Rows are made by the ten thousands: a row is one allocation, beside those of the rows made
/// before it, since the view goes through all of them in one turn; its children are a list until
/// somebody asks for one of them by its place.
class MOXUI_API UI_MultiColumnTreeRow final
    : public boost::intrusive_ref_counter<UI_MultiColumnTreeRow, boost::thread_unsafe_counter> {
public:
    UI_MultiColumnTreeRow(UI_MultiColumnTreeRow const&) = delete;
    UI_MultiColumnTreeRow& operator=(UI_MultiColumnTreeRow const&) = delete;

    static void* operator new(std::size_t size);
    static void operator delete(void* memory, std::size_t size) noexcept;

    /// Null for a row at the top.
    [[nodiscard]] boost::intrusive_ptr<UI_MultiColumnTreeRow> GetParentRow() const;
    [[nodiscard]] std::size_t GetChildCount() const { return childCount; }
    /// Null when there is no child at `index`.
    [[nodiscard]] boost::intrusive_ptr<UI_MultiColumnTreeRow> GetChildRow(std::size_t index) const;

private:
    friend class backend::TreeModel;

    UI_MultiColumnTreeRow() = default;

    /// Makes it a row of no tree.
    void Detach();

    [[nodiscard]] UI_MultiColumnTreeRow* ChildAt(std::size_t index) const;

    UI_MultiColumnTreeRow* parent = nullptr;  // the model's own invisible root for a row at the top
    UI_MultiColumnTreeRow* firstChild = nullptr;
    UI_MultiColumnTreeRow* lastChild = nullptr;
    UI_MultiColumnTreeRow* nextSibling = nullptr;
    std::size_t childCount = 0;
    /// The first children by their places, as far as somebody has asked.
    mutable std::vector<UI_MultiColumnTreeRow*> childrenByPlace;

    int place = 0;            // among its siblings
    int level = 0;            // 1 at the top
    int shownChildCount = 0;  // how many children the view shows
    bool isNew = true;        // not shown by the view yet
    bool isSelectable = true;
    bool isOpen = false;
};

}  // namespace moxui::controls
