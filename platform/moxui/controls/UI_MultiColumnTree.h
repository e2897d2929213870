#pragma once

#include <functional>
#include <vector>

#include "moxui/controls/UI_ControlView.h"
#include "moxui/controls/UI_MultiColumnTreeRow.h"

namespace moxui::controls {

/// A tree of rows, which its owner draws cell by cell. Main thread.
///
/// Rows are appended, and then shown together: by LayoutAfterAppendRow, by any operation that needs
/// them on the screen, or by the event loop at the latest. The tree notifies of the user's
/// actions, not of the program's.
///
/// The user moves with the arrows, Home, End, the Page keys and by typing the beginning of a row's
/// name; Right opens a row or goes to its first child, Left closes it or goes to its parent; *
/// opens all below a row, in slices, so that the window goes on answering meanwhile.
class MOXUI_API UI_MultiColumnTree : public UI_ControlView {
public:
    using RowPtr = boost::intrusive_ptr<UI_MultiColumnTreeRow>;
    using DrawCellFunction =
        std::function<void(drawbot::Drawbot* drawbot, RowPtr const& row, int column,
                           moxcore::geom::RectT<float> const& cell)>;
    using RowNameFunction = std::function<moxcore::string::UTF16String(RowPtr const& row)>;
    using SelectionFunction = std::function<void(std::vector<RowPtr> const& selected)>;
    using DisclosureFunction = std::function<void(RowPtr const& row, bool open)>;
    using RowFunction = std::function<void(RowPtr const& row)>;

    explicit UI_MultiColumnTree(int columnCount = 1);
    ~UI_MultiColumnTree() override;

    /// Whether only one row can be selected at a time. True at first.
    void SetSingleSelection(bool single);
    /// Whether the user can leave no row selected where one was. True at first.
    void SetEmptySelectionSupported(bool supported);

    /// Draws one cell of a row that is to be seen. `cell` is what is seen of the cell, right of the
    /// row's arrow; the row's highlight is drawn already.
    void SetDrawCellFunction(DrawCellFunction function);
    /// Names a row, for screen readers, for finding it by typing and for the tooltip of a row that
    /// is too narrow for its name. Asked when it is needed.
    void SetRowNameFunction(RowNameFunction function);
    /// The user has selected other rows.
    void SetRowsSelectionChangedFunction(SelectionFunction function);
    /// The user has opened or closed a row. Called once for the row where all below was opened.
    void SetRowDisclosureChangedFunction(DisclosureFunction function);
    /// The user has pressed Enter on a row. Without a function Enter goes to the view that the tree
    /// is in.
    void SetRowActivatedFunction(RowFunction function);

    /// A new last child of `parent`, or a new last row at the top when that is null.
    /// `selectable`: whether it can be selected; `open`: whether its children are shown.
    RowPtr CreateAndAppendRow(RowPtr const& parent, bool selectable, bool open);
    /// Shows all rows that were appended. `row` and `withChildren` have no meaning here.
    void LayoutAfterAppendRow(RowPtr const& row, bool withChildren);
    void DeleteAllRows();

    [[nodiscard]] std::size_t GetRowCount() const;

    /// Opens the row; whether its parents are open is another question.
    void OpenRow(RowPtr const& row);
    [[nodiscard]] bool IsRowOpen(RowPtr const& row) const;

    /// Selects the row or no longer. `exclusively` no other row stays selected, `moveFocus` makes
    /// it the one from which the arrow keys go on.
    void SelectRow(RowPtr const& row, bool select, bool exclusively, bool moveFocus);
    [[nodiscard]] bool IsRowSelected(RowPtr const& row) const;
    [[nodiscard]] std::vector<RowPtr> GetSelectedRows() const;

    /// Scrolls by as little as it takes to see the row, or until it is in the middle. Its parents
    /// are opened for it. `column` and `redraw` have no meaning here: pass 0 and true.
    void ScrollRowIntoView(RowPtr const& row, bool toTheMiddle, int column, bool redraw);

    /// How far the tree is scrolled, in units; values that cannot be are moved to the nearest that
    /// can.
    [[nodiscard]] moxcore::geom::PointT<float> GetScrollPosition() const;
    void SetScrollPosition(moxcore::geom::PointT<float> const& position);

    /// How wide a column is at most: what is seen of it ends where the tree does.
    void SetColumnWidth(int column, float width);
    /// The theme's until it is set.
    void SetDefaultRowHeight(float height);
};

}  // namespace moxui::controls
