#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <functional>
#include <memory>
#include <string>

#include "moxcore/geom/Point.h"
#include "moxcore/geom/Rect.h"
#include "moxcore/string/UTF16String.h"
#include "moxcore/utility/RefCountedObjectWithWeakPtr.h"
#include "moxui/Export.h"
#include "moxui/ui/OS_Window.h"
#include "moxui/ui/PointerEvent.h"

namespace moxui::backend {
class Peer;
}
namespace moxui::drawbot {
class Drawbot;
class SupplierInterface;
}  // namespace moxui::drawbot

namespace moxui::ui {

class UI_Container;

/// One node of the tree of views. Held by boost::intrusive_ptr; a parent holds its children, a
/// child knows its parent weakly. Main thread, except for references, which may be taken and
/// dropped on any.
///
/// A node's own coordinates have their origin in its top left corner; "the parent's coordinates"
/// are the own ones of its parent. All are in units that do not depend on the screen's scale, and
/// count from the left: an application that goes from right to left shows the mirror image.
class MOXUI_API UI_Node : public moxcore::utility::RefCountedObjectWithWeakPtr {
public:
    /// Answers true when the event goes no further; sets its last argument when it handled it.
    using MouseEventFunction = std::function<bool(UI_Node*, MouseEvent const&, bool&)>;

    /// Names the node for UI_ChildGetFromID and for tests. Users never see it.
    void UI_SetNodeID(std::string const& id);
    /// Empty unless it was set.
    [[nodiscard]] std::string const& UI_GetNodeID() const { return id; }

    /// Null at the top, and while the node is in no tree.
    [[nodiscard]] boost::intrusive_ptr<UI_Node> UI_GetParentNode() const;
    /// The topmost node above this one; itself when it has no parent.
    [[nodiscard]] boost::intrusive_ptr<UI_Node> UI_GetRootNode() const;
    /// The window that the node is in.
    [[nodiscard]] OS_Window UI_GetOSWindow();
    /// The first node below this one, in the order of drawing, whose ID is `id`; null when there is
    /// none.
    [[nodiscard]] boost::intrusive_ptr<UI_Node> UI_ChildGetFromID(std::string const& id) const;

    /// The node's rectangle as it was last given: in the parent's coordinates, or in its own, in
    /// which its corner is (0, 0).
    [[nodiscard]] virtual moxcore::geom::RectT<float> UI_GetLocalRectF(
        bool inParentCoordinates) const;
    /// `rect` of the node's own coordinates on the screen.
    [[nodiscard]] moxcore::geom::RectT<float> UI_LocalToGlobalF(
        moxcore::geom::RectT<float> const& rect) const;

    /// The size that the node would like, measured with `drawbot`; nothing by default.
    [[nodiscard]] virtual moxcore::geom::PointT<float> UI_GetRecommendedSize(
        drawbot::Drawbot* drawbot) const;

    /// The factory of fonts, paths and pens for the node's window; null while it is in none.
    [[nodiscard]] virtual drawbot::SupplierInterface const* UI_GetDrawSupplier() const;

    /// Draws what the node itself shows, in its own coordinates; its children draw themselves after
    /// it. Nothing by default.
    virtual void UI_Draw(drawbot::Drawbot* drawbot) const;
    /// Has the node drawn anew soon.
    void UI_Invalidate();

    /// A pointer did something over the node and none of its mouse-event functions took it. `node`
    /// is this node. Answers true when it goes no further.
    virtual bool UI_DoPointerEvent(UI_Node* node, PointerEvent const& event);

    /// `function` sees the node's mouse events before the node does, the functions of a lower
    /// `order` first. With one, the node takes the keyboard's focus, and Enter and Space press it.
    void UI_AddCustomMouseEventFunction(std::shared_ptr<MouseEventFunction> const& function,
                                        int order);

    /// Shown when the pointer has rested on the node for `delay` milliseconds; an empty text shows
    /// none.
    void UI_SetToolTip(moxcore::string::UTF16String const& text, int delay);
    /// The text of UI_SetToolTip; empty when there is none.
    [[nodiscard]] moxcore::string::UTF16String UI_GetToolTip() const;

    /// Sets the accessible name; a control's own text by default.
    void UI_SetAccessibleName(moxcore::string::UTF16String const& name);

    /// Called when the theme has changed: override it to read cached colours and fonts again. A
    /// node is called before its children.
    virtual void UI_ThemeChanged();

    /// The platform's object that shows the node. For the toolkit's own use.
    [[nodiscard]] backend::Peer& GetPeer() const { return *peer; }

protected:
    /// Takes over the widget's side of the view.
    explicit UI_Node(std::unique_ptr<backend::Peer> peer);
    ~UI_Node() override;

private:
    friend class UI_Container;

    std::string id;
    UI_Container* parent = nullptr;  // holds this node
    std::unique_ptr<backend::Peer> peer;
};

}  // namespace moxui::ui
