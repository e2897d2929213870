#pragma once

#include <cstddef>
#include <vector>

#include "moxui/ui/UI_Node.h"

namespace moxui::ui {

/// A node that holds others. Children are drawn, and reached with Tab, in their order. Main thread.
class MOXUI_API UI_Container : public UI_Node {
public:
    /// In the order of drawing and of Tab.
    using Children = std::vector<boost::intrusive_ptr<UI_Node>>;
    /// Valid until a child comes or goes.
    using ChildIterator = Children::const_iterator;

    /// The first child.
    [[nodiscard]] ChildIterator ChildBegin() const { return children.begin(); }
    /// Behind the last child.
    [[nodiscard]] ChildIterator ChildEnd() const { return children.end(); }
    /// The number of children.
    [[nodiscard]] std::size_t ChildCount() const { return children.size(); }

    /// Puts `child` (not null, not an ancestor) before the child at `index`; at the end when there
    /// is none. A child of another container, or of this one, is taken from there first.
    void ChildInsert(std::size_t index, boost::intrusive_ptr<UI_Node> const& child);
    /// As ChildInsert, at the end.
    void ChildPushBack(boost::intrusive_ptr<UI_Node> const& child);

    /// Lets go of `child`; nothing when it is gone or no child of this one.
    void ChildRemove(moxcore::utility::RefCountedWeakPtr<UI_Node> const& child);
    /// The same for a child that is at hand.
    void ChildRequestRemove(boost::intrusive_ptr<UI_Node> const& child);
    /// Lets go of all children.
    void ChildRemoveAll();

protected:
    /// Takes over the widget's side of the view.
    explicit UI_Container(std::unique_ptr<backend::Peer> peer);
    ~UI_Container() override;

private:
    void Detach(UI_Node& child);

    Children children;
};

}  // namespace moxui::ui
