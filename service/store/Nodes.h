#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quilloservice {

class Database;

/// What a node can be, in the words of the wire and the store.
namespace kind {
inline constexpr std::string_view Account = "account";
inline constexpr std::string_view Workspace = "workspace";
inline constexpr std::string_view Project = "project";
inline constexpr std::string_view Folder = "folder";
inline constexpr std::string_view File = "file";
inline constexpr std::string_view VersionStack = "version_stack";
inline constexpr std::string_view ReviewLink = "review_link";
}  // namespace kind

/// Anything that has an ID: from an account down to a file.
struct Node {
    std::string id;
    std::string kind;
    std::string account;
    std::optional<std::string> parent;
    std::string name;
    std::int64_t version = 1;  ///< of a file in its version stack
};

std::optional<Node> FindNode(Database& database, std::string_view id);

/// Whether `user` may see what belongs to `account`.
bool IsMember(Database& database, std::string_view user, std::string_view account);

/// The node with `id`, which has to be of the kind asked for. Throws ApiError: 404 when there is
/// none, 403 when it belongs to an account of which `user` is no member.
Node RequireNode(Database& database, std::string_view user, std::string_view id,
                 std::string_view kind);

/// Throws ApiError 403 unless `user` is a member of the node's account.
void RequireMember(Database& database, std::string_view user, Node const& node);

/// The nodes right below `parent`, in the order in which they were made.
std::vector<Node> ChildrenOf(Database& database, std::string_view parent);

void InsertNode(Database& database, Node const& node);

}  // namespace quilloservice
