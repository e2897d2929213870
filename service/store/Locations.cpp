#include "service/store/Locations.h"

#include <stdexcept>

#include "service/base/ApiError.h"
#include "service/base/Uuid.h"
#include "service/store/ChangeFeed.h"
#include "service/store/Store.h"

namespace quilloservice {

namespace {

/// The kind of location that is created below a parent of `kind`.
std::string_view KindBelow(std::string_view kind) {
    if (kind == kind::kAccount) return kind::kWorkspace;
    if (kind == kind::kWorkspace) return kind::kProject;
    if (kind == kind::kFolder) return kind::kFolder;
    throw std::logic_error("no location is created below a " + std::string(kind));
}

Node ParentOf(Database& database, Node const& node) {
    return *FindNode(database, *node.parent);
}

std::optional<Node> RootOf(Database& database, Node const& node) {
    if (node.kind != kind::kProject) return std::nullopt;
    for (Node& child : ChildrenOf(database, node.id)) {
        if (child.kind == kind::kFolder) return std::move(child);
    }
    return std::nullopt;
}

/// Records a change of the list that contains `node`.
void RecordList(Database& database, Node const& node) {
    if (node.kind == kind::kAccount) return ChangeFeed::RecordAccounts(database, node.account);
    ChangeFeed::RecordChildren(database, ParentOf(database, node));
}

/// Returns a location that may be changed by itself. A root folder only changes with its project.
Node RequireLocation(Database& database, UserId const& user, NodeRef const& location) {
    Node node = RequireNode(database, user, location);
    if (node.kind == kind::kFolder && ParentOf(database, node).kind == kind::kProject) {
        throw ApiError::Conflict("This is the root folder of a project; change the project.");
    }
    return node;
}

void RequireEmpty(Database& database, Node const& node) {
    std::optional<Node> root = RootOf(database, node);
    if (root) RequireEmpty(database, *root);
    std::size_t children = ChildrenOf(database, node.id).size();
    if (children > (root ? 1U : 0U)) {
        throw ApiError::Conflict(
            "The location is not empty. Movies and links are never removed with a location; "
            "remove its contents first.");
    }
    if (database.Query("SELECT 1 FROM uploads WHERE folder = ? AND published = 0", node.id)
            .Next()) {
        throw ApiError::Conflict("A movie is being uploaded into this location.");
    }
}

void SetName(Database& database, Node const& node, std::string const& name) {
    database.Run("UPDATE nodes SET name = ? WHERE id = ?", name, node.id);
}

void DeleteNode(Database& database, Node const& node) {
    database.Run("DELETE FROM nodes WHERE id = ?", node.id);
}

}  // namespace

Location Locations::AddAccount(UserId const& user, std::string const& name) {
    Location location = store.Write([&](Database& database) {
        AccountId id(NewUuid());
        Node account{id, std::string(kind::kAccount), id, std::nullopt, name};
        InsertNode(database, account);
        database.Run("INSERT INTO memberships (user, account) VALUES (?, ?)", user, id);
        RecordList(database, account);
        return Location{account, std::nullopt};
    });
    changes.Announce();
    return location;
}

Location Locations::Add(UserId const& user, NodeRef const& parent, std::string const& name) {
    Location location = store.Write([&](Database& database) {
        std::string_view kind = KindBelow(parent.kind);
        Node above = RequireNode(database, user, parent);
        Location made{{NodeId(NewUuid()), std::string(kind), above.account, above.id, name},
                      std::nullopt};
        InsertNode(database, made.node);
        if (kind == kind::kProject) {
            made.root = Node{NodeId(NewUuid()), std::string(kind::kFolder), above.account,
                             made.node.id, name};
            InsertNode(database, *made.root);
        }
        RecordList(database, made.node);
        return made;
    });
    changes.Announce();
    return location;
}

Location Locations::Rename(UserId const& user, NodeRef const& location, std::string const& name) {
    Location renamed = store.Write([&](Database& database) {
        Node node = RequireLocation(database, user, location);
        std::optional<Node> root = RootOf(database, node);
        SetName(database, node, name);
        node.name = name;
        if (root) {
            SetName(database, *root, name);
            root->name = name;
        }
        RecordList(database, node);
        return Location{node, root};
    });
    changes.Announce();
    return renamed;
}

void Locations::Remove(UserId const& user, NodeRef const& location) {
    store.Write([&](Database& database) {
        Node node = RequireLocation(database, user, location);
        RequireEmpty(database, node);
        RecordList(database, node);
        if (auto root = RootOf(database, node)) DeleteNode(database, *root);
        database.Run("DELETE FROM memberships WHERE account = ?", node.id);
        DeleteNode(database, node);
    });
    changes.Announce();
}

}  // namespace quilloservice
