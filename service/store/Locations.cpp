#include "service/store/Locations.h"

#include "service/base/ApiError.h"
#include "service/base/Uuid.h"
#include "service/store/ChangeFeed.h"
#include "service/store/Store.h"

namespace quilloservice {

namespace {

std::string_view KindOfParent(std::string_view kind) {
    if (kind == kind::Workspace) return kind::Account;
    if (kind == kind::Project) return kind::Workspace;
    return kind::Folder;
}

Node ParentOf(Database& database, Node const& node) {
    return *FindNode(database, *node.parent);
}

std::optional<Node> RootOf(Database& database, Node const& node) {
    if (node.kind != kind::Project) return std::nullopt;
    for (Node& child : ChildrenOf(database, node.id)) {
        if (child.kind == kind::Folder) return std::move(child);
    }
    return std::nullopt;
}

/// The list in which `node` stands has changed.
void RecordList(Database& database, Node const& node) {
    if (node.kind == kind::Account) return ChangeFeed::RecordAccounts(database, node.id);
    ChangeFeed::RecordChildren(database, ParentOf(database, node));
}

/// The location, for a change of its own: a root folder is a part of its project.
Node RequireLocation(Database& database, std::string const& user, std::string_view kind,
                     std::string const& id) {
    Node node = RequireNode(database, user, id, kind);
    if (kind == kind::Folder && ParentOf(database, node).kind == kind::Project) {
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
            "It is not empty, and movies and links are never removed with a location; "
            "remove what it holds first.");
    }
    if (database.Query("SELECT 1 FROM uploads WHERE folder = ? AND published = 0", node.id)
            .Next()) {
        throw ApiError::Conflict("A movie is being uploaded into it.");
    }
}

void SetName(Database& database, Node const& node, std::string const& name) {
    database.Run("UPDATE nodes SET name = ? WHERE id = ?", name, node.id);
}

void DeleteNode(Database& database, Node const& node) {
    database.Run("DELETE FROM nodes WHERE id = ?", node.id);
}

}  // namespace

Location Locations::AddAccount(std::string const& user, std::string const& name) {
    Location location = store.Write([&](Database& database) {
        std::string id = NewUuid();
        Node account{id, std::string(kind::Account), id, std::nullopt, name};
        InsertNode(database, account);
        database.Run("INSERT INTO memberships (user, account) VALUES (?, ?)", user, id);
        RecordList(database, account);
        return Location{account, std::nullopt};
    });
    changes.Announce();
    return location;
}

Location Locations::Add(std::string const& user, std::string_view kind, std::string const& parent,
                        std::string const& name) {
    Location location = store.Write([&](Database& database) {
        Node above = RequireNode(database, user, parent, KindOfParent(kind));
        Location made{{NewUuid(), std::string(kind), above.account, above.id, name}, std::nullopt};
        InsertNode(database, made.node);
        if (kind == kind::Project) {
            made.root =
                Node{NewUuid(), std::string(kind::Folder), above.account, made.node.id, name};
            InsertNode(database, *made.root);
        }
        RecordList(database, made.node);
        return made;
    });
    changes.Announce();
    return location;
}

Location Locations::Rename(std::string const& user, std::string_view kind, std::string const& id,
                           std::string const& name) {
    Location location = store.Write([&](Database& database) {
        Node node = RequireLocation(database, user, kind, id);
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
    return location;
}

void Locations::Remove(std::string const& user, std::string_view kind, std::string const& id) {
    store.Write([&](Database& database) {
        Node node = RequireLocation(database, user, kind, id);
        RequireEmpty(database, node);
        RecordList(database, node);
        if (auto root = RootOf(database, node)) DeleteNode(database, *root);
        database.Run("DELETE FROM memberships WHERE account = ?", node.id);
        DeleteNode(database, node);
    });
    changes.Announce();
}

}  // namespace quilloservice
