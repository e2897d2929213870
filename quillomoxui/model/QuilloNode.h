#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "quillomoxui/Export.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"

namespace quillomoxui {

/// A place in the user's tree of locations. A parent holds its children strongly, in its child
/// properties; a child holds its parent weakly. Make every node with std::make_shared. A backend
/// derives from the concrete classes, overrides FetchChildren and fills the child properties when
/// answers come, on any thread.
class QUILLO_API QuilloNode : public IDNotifyingPropertyHost,
                              public NameNotifyingPropertyHost,
                              public FetchChildrenStateNotifyingPropertyHost {
public:
    /// `parent` may be null and never changes.
    explicit QuilloNode(std::shared_ptr<QuilloNode> const& parent);
    ~QuilloNode() override;

    /// Gives the node its ID and its name while it is being made: nobody can have bound to it, so
    /// nobody is told.
    void SetInitialIdentity(moxcore::utility::Guid const& id, UTF16String name);

    /// The children there are at the moment, as they stand in the child properties.
    [[nodiscard]] virtual NodeVector<QuilloNode> GetChildNodes() const = 0;

    /// Asks the node to obtain its children. They arrive later, in the child properties; so does
    /// the state.
    virtual void FetchChildren();

    /// Four letters for the trace.
    [[nodiscard]] virtual UTF16String GetTypeAbbreviation() const = 0;

    /// Null when there is none or it is gone.
    [[nodiscard]] std::shared_ptr<QuilloNode> GetParent() const;

    /// Whether the node has ever been among its parent's children: one that has, and is no longer,
    /// has been taken away, while one that a host has made itself may never be listed.
    [[nodiscard]] bool HasBeenListed() const { return hasBeenListed; }

    /// The nearest T on the way from this node, itself included, to the root; null when there is
    /// none. T is QuilloAccount or QuilloProject.
    template <class T>
    [[nodiscard]] std::shared_ptr<T> FindSelfOrAncestorOfType();

protected:
    /// For the setters of child properties, before anybody can see the node there.
    static void NoteListed(QuilloNode& child) { child.hasBeenListed = true; }
    /// The same for several.
    template <class Node>
    static void NoteListed(NodeVector<Node> const& children) {
        for (auto const& child : children)
            NoteListed(*child);
    }

private:
    std::weak_ptr<QuilloNode> const parent;
    std::atomic<bool> hasBeenListed{false};
};

}  // namespace quillomoxui
