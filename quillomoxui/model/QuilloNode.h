#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "quillomoxui/Export.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"

namespace quillomoxui {

/// The one list of the kinds of nodes: a kind K with its class QuilloK, its abbreviation in the
/// trace and its name in the host's output.
#define QUILLO_NODE_KINDS(KIND)          \
    KIND(User, "User", "user")           \
    KIND(Account, "Acct", "account")     \
    KIND(Workspace, "Wksp", "workspace") \
    KIND(Project, "Proj", "project")     \
    KIND(Folder, "Fold", "folder")       \
    KIND(File, "File", "file")           \
    KIND(VersionStack, "Vers", "version_stack")

#define QUILLO_ENUMERATOR(K, abbreviation, name) K,
#define QUILLO_KIND_OF(K, abbreviation, name) \
    template <>                               \
    inline constexpr NodeKind kKindOf<Quillo##K> = NodeKind::K;
#define QUILLO_TEXTS(K, abbreviation, name) NodeKindTexts{abbreviation, name},

/// Tells the classes of nodes apart.
enum class NodeKind : std::uint8_t {
    QUILLO_NODE_KINDS(QUILLO_ENUMERATOR)
        Other  ///< a class of a host's own, directly below QuilloNode
};

/// The kind of class `Node`, which its derived classes share.
template <class Node>
inline constexpr NodeKind kKindOf = NodeKind::Other;
QUILLO_NODE_KINDS(QUILLO_KIND_OF)

/// The texts of a kind, in ASCII and not for users.
struct NodeKindTexts {
    char const* abbreviation;  ///< four letters, for the trace
    char const* name;          ///< for programs that read the host's output
};

inline constexpr NodeKindTexts kNodeKindTexts[] = {QUILLO_NODE_KINDS(QUILLO_TEXTS)
                                                       NodeKindTexts{"Othr", "other"}};

[[nodiscard]] constexpr NodeKindTexts const& TextsOf(NodeKind kind) {
    return kNodeKindTexts[static_cast<std::size_t>(kind)];
}

#undef QUILLO_ENUMERATOR
#undef QUILLO_KIND_OF
#undef QUILLO_TEXTS

/// A place in the user's tree of locations. A parent holds its children strongly, in its child
/// properties; a child holds its parent weakly. Make every node with std::make_shared. A backend
/// derives from the concrete classes, overrides FetchChildren and fills the child properties when
/// answers come, on any thread.
class QUILLO_API QuilloNode : public IDNotifyingPropertyHost,
                              public NameNotifyingPropertyHost,
                              public FetchChildrenStateNotifyingPropertyHost {
public:
    /// A node of the kind NodeKind::Other. `parent` may be null and never changes.
    explicit QuilloNode(std::shared_ptr<QuilloNode> const& parent);
    ~QuilloNode() override;

    /// Never changes.
    [[nodiscard]] NodeKind GetKind() const { return kind; }

    /// Gives the node its ID and its name while it is being made: nothing can be bound to it
    /// yet, so nothing is notified.
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

    /// The nearest T on the path from this node, itself included, to the root; null when there is
    /// none. T is QuilloAccount or QuilloProject.
    template <class T>
    [[nodiscard]] std::shared_ptr<T> FindSelfOrAncestorOfType();

protected:
    QuilloNode(NodeKind kind, std::shared_ptr<QuilloNode> const& parent);  ///< a node of `kind`

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
    NodeKind const kind;
};

/// `node` as a Node, one of the classes of QUILLO_NODE_KINDS; null when it is none, or null itself.
template <class Node>
[[nodiscard]] std::shared_ptr<Node> NodeAs(std::shared_ptr<QuilloNode> const& node) {
    static_assert(kKindOf<Node> != NodeKind::Other);
    if (!node || node->GetKind() != kKindOf<Node>) return nullptr;
    return std::static_pointer_cast<Node>(node);
}

}  // namespace quillomoxui
