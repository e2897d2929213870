#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "service/store/Ids.h"

namespace quilloservice {

class Database;

/// An account, or anything that belongs to one, down to a file.
struct Node {
    NodeId id;
    std::string kind;
    AccountId account;  ///< of an account: its own ID
    std::optional<NodeId> parent;
    std::string name;
    std::int64_t version = 1;  ///< of a file in its version stack
};

/// A node's ID and the kind that the node must have. Converts from IDs whose type implies the kind.
struct NodeRef {
    template <typename Tag>
    requires requires { Tag::kKind; }
    NodeRef(Id<Tag> const& nodeId) : id(nodeId), kind(Tag::kKind) {}

    NodeId id;
    std::string_view kind;
};

std::optional<Node> FindNode(Database& database, NodeId const& id);

/// Whether `user` may see the contents of `account`.
bool IsMember(Database& database, UserId const& user, AccountId const& account);

/// Returns the node. Throws ApiError 404 if no node of this kind has the ID, 403 if `user` is not a
/// member of its account.
Node RequireNode(Database& database, UserId const& user, NodeRef const& ref);

/// Throws ApiError 403 unless `user` is a member of the node's account.
void RequireMember(Database& database, UserId const& user, Node const& node);

/// The direct children of `parent`, in order of creation.
std::vector<Node> ChildrenOf(Database& database, NodeId const& parent);

void InsertNode(Database& database, Node const& node);

}  // namespace quilloservice
