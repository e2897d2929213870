#pragma once

#include <QPointer>
#include <QWidget>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "moxui/ui/UI_Node.h"

namespace moxui::backend {

/// Mixed into our own widget classes: the node that the widget shows, null once it is gone.
struct NodeLink {
    ui::UI_Node* node = nullptr;
};

/// The widget that shows a node, and the events that it passes to the node. Owned by the node; main
/// thread.
class Peer {
public:
    enum class Ownership { Node, Host };

    /// Takes `widget` over, unless it is the host's.
    template <class Widget>
    explicit Peer(Widget* widget, Ownership ownership = Ownership::Node)
        : widget(widget), ownership(ownership) {
        if constexpr (std::is_base_of_v<NodeLink, Widget>) link = widget;
        // Views are laid out by their parents; Qt would measure each one that is shown before that.
        if (ownership == Ownership::Node) widget->setAttribute(Qt::WA_Resized);
    }
    /// The widget is destroyed by the event loop, once no event of its own is being handled.
    ~Peer();
    Peer(Peer const&) = delete;
    Peer& operator=(Peer const&) = delete;

    /// Null once Qt has destroyed the widget, with its window for instance.
    [[nodiscard]] QWidget* GetWidget() const { return widget; }
    template <class Widget>
    [[nodiscard]] Widget* GetWidgetAs() const {
        return static_cast<Widget*>(widget.data());
    }

    void SetNode(ui::UI_Node* newNode);

    /// The context of connections to what belongs to the node: they end with it, though the widget
    /// lives on for a moment.
    [[nodiscard]] QObject* Context() { return &*context; }

    [[nodiscard]] ui::UI_Node* GetNode() const { return node; }

    /// Puts the widget into `parent`'s, or into none.
    void SetParent(Peer* parent);

    /// The parent's node is going, and its widget with it: when this node goes now, too, its widget
    /// is left where it is. A node that lives on is taken out with SetParent.
    void WillGoWithParent() { goesWithParent = true; }

    /// Runs the mouse-event functions and then the node's own handler. True when the event goes no
    /// further. What is disabled is not pressed.
    bool Deliver(ui::MouseEvent const& event);
    /// The same for a press and a release by keyboard; true when the press goes no further.
    bool DeliverKeyPress();

    void AddMouseEventFunction(std::shared_ptr<ui::UI_Node::MouseEventFunction> const& function,
                               int order);

    /// Gives the widget its place. `drawn` is what it covers, which may reach past the node's
    /// rectangle, and `corner` the corner of that rectangle. Both are in the parent's coordinates,
    /// which count from the left; a parent whose layout goes from right to left is mirrored here
    /// and nowhere else.
    void Place(QRect const& drawn, QPoint corner);
    /// Gives the children's widgets their places anew; called when the layout's direction changes.
    void PlaceChildren() const;

    /// A point of the widget's coordinates in the node's.
    [[nodiscard]] QPointF ToNode(QPointF const& inWidget) const;
    /// A rectangle of the node's coordinates in the widget's.
    [[nodiscard]] QRectF ToWidget(QRectF const& inNode) const;
    /// Where the node's coordinates begin in the widget's of a layout from left to right.
    [[nodiscard]] QPoint Origin() const { return origin; }

    /// The theme that the node was last notified of.
    unsigned themeGeneration = 0;

private:
    void PlaceWidget() const;

    QPointer<QWidget> widget;
    std::optional<QRect> place;  // what Place was given
    QPoint origin;
    NodeLink* link = nullptr;  // a part of widget
    ui::UI_Node* node = nullptr;
    Ownership ownership;
    bool goesWithParent = false;
    std::optional<QObject> context{std::in_place};
    std::vector<std::pair<int, std::shared_ptr<ui::UI_Node::MouseEventFunction>>> mouseFunctions;
};

/// A node's peer with a new widget of the given class.
template <class Widget, class... Args>
[[nodiscard]] std::unique_ptr<Peer> MakePeer(Args&&... args) {
    return std::make_unique<Peer>(new Widget(std::forward<Args>(args)...));
}

}  // namespace moxui::backend
