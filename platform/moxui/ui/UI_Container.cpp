#include "moxui/ui/UI_Container.h"

#include <algorithm>

#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/ui/UI_SubView.h"

namespace moxui::ui {

UI_Container::UI_Container(std::unique_ptr<backend::Peer> peer) : UI_Node(std::move(peer)) {}

UI_Container::~UI_Container() {
    for (auto& child : children) {
        moxcore::utility::RefCountedWeakPtr<UI_Node> const weak(child.get());
        child->parent = nullptr;
        child->GetPeer().WillGoWithParent();
        child.reset();
        if (auto const alive = weak.Lock()) alive->GetPeer().SetParent(nullptr);
    }
}

void UI_Container::ChildInsert(std::size_t index, boost::intrusive_ptr<UI_Node> const& child) {
    // The caller may have passed the element that the removal takes away.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    boost::intrusive_ptr<UI_Node> const kept = child;
    if (kept->parent) kept->parent->ChildRequestRemove(kept);

    index = std::min(index, children.size());
    children.insert(children.begin() + static_cast<std::ptrdiff_t>(index), kept);
    kept->parent = this;

    auto& childPeer = kept->GetPeer();
    childPeer.SetParent(&GetPeer());
    auto* const widget = childPeer.GetWidget();
    if (!widget) return;
    if (index + 1 < children.size())
        if (auto* const above = children[index + 1]->GetPeer().GetWidget())
            widget->stackUnder(above);
    if (UI_GetDrawSupplier()) backend::TellOfTheme(*kept);
    auto const* const view = dynamic_cast<UI_SubView const*>(kept.get());
    // Qt shows what nobody has hidden along with its parent.
    if (view) widget->setVisible(view->UI_IsViewVisible());
}

void UI_Container::ChildPushBack(boost::intrusive_ptr<UI_Node> const& child) {
    ChildInsert(children.size(), child);
}

void UI_Container::ChildRemove(moxcore::utility::RefCountedWeakPtr<UI_Node> const& child) {
    ChildRequestRemove(child.Lock());
}

void UI_Container::ChildRequestRemove(boost::intrusive_ptr<UI_Node> const& child) {
    auto const place = std::find(children.begin(), children.end(), child);
    if (!child || place == children.end()) return;
    auto const kept = *place;
    children.erase(place);
    Detach(*kept);
}

void UI_Container::ChildRemoveAll() {
    Children removed;
    removed.swap(children);
    for (auto const& child : removed)
        Detach(*child);
}

void UI_Container::Detach(UI_Node& child) {
    // An open menu below it closes with its widget, and notifies the ancestors.
    child.GetPeer().SetParent(nullptr);
    if (child.parent == this) child.parent = nullptr;
}

}  // namespace moxui::ui
