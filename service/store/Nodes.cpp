#include "service/store/Nodes.h"

#include <algorithm>

#include "service/base/ApiError.h"
#include "service/store/Database.h"

namespace quilloservice {

namespace {

Node FromRow(Statement const& row) {
    return {row.Id<NodeId>(0),         row.Text(1), row.Id<AccountId>(2),
            row.OptionalId<NodeId>(3), row.Text(4), row.Integer(5)};
}

std::string InWords(std::string_view kind) {
    std::string words(kind);
    std::replace(words.begin(), words.end(), '_', ' ');
    return words;
}

}  // namespace

std::optional<Node> FindNode(Database& database, NodeId const& id) {
    Statement row = database.Query(
        "SELECT id, kind, account, parent, name, version FROM nodes WHERE id = ?", id);
    if (!row.Next()) return std::nullopt;
    return FromRow(row);
}

bool IsMember(Database& database, UserId const& user, AccountId const& account) {
    return database.Query("SELECT 1 FROM memberships WHERE user = ? AND account = ?", user, account)
        .Next();
}

Node RequireNode(Database& database, UserId const& user, NodeRef const& ref) {
    std::optional<Node> node = FindNode(database, ref.id);
    if (!node || node->kind != ref.kind) {
        throw ApiError::NotFound("No " + InWords(ref.kind) + " has this ID.");
    }
    RequireMember(database, user, *node);
    return *std::move(node);
}

void RequireMember(Database& database, UserId const& user, Node const& node) {
    if (!IsMember(database, user, node.account)) {
        throw ApiError::Forbidden("This " + InWords(node.kind) +
                                  " belongs to an account of which the user is no member.");
    }
}

std::vector<Node> ChildrenOf(Database& database, NodeId const& parent) {
    Statement row = database.Query(
        "SELECT id, kind, account, parent, name, version FROM nodes WHERE parent = ? ORDER BY seq",
        parent);
    std::vector<Node> children;
    while (row.Next())
        children.push_back(FromRow(row));
    return children;
}

void InsertNode(Database& database, Node const& node) {
    database.Run(
        "INSERT INTO nodes (id, kind, account, parent, name, version) VALUES (?, ?, ?, ?, ?, ?)",
        node.id, node.kind, node.account, node.parent, node.name, node.version);
}

}  // namespace quilloservice
