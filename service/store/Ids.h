#pragma once

#include <cstdint>
#include <string_view>

#include "service/base/Id.h"

namespace quilloservice {

/// The kinds of node, as named on the wire and in the store.
namespace kind {
inline constexpr std::string_view Account = "account";
inline constexpr std::string_view Workspace = "workspace";
inline constexpr std::string_view Project = "project";
inline constexpr std::string_view Folder = "folder";
inline constexpr std::string_view File = "file";
inline constexpr std::string_view VersionStack = "version_stack";
inline constexpr std::string_view ReviewLink = "review_link";
}  // namespace kind

// Nodes: everything that belongs to an account, and the account itself.
struct NodeTag : UuidForm {};
struct AccountTag : NodeTag {
    static constexpr std::string_view kKind = kind::Account;
};
struct WorkspaceTag : NodeTag {
    static constexpr std::string_view kKind = kind::Workspace;
};
struct ProjectTag : NodeTag {
    static constexpr std::string_view kKind = kind::Project;
};
struct FolderTag : NodeTag {
    static constexpr std::string_view kKind = kind::Folder;
};
struct LinkTag : NodeTag {
    static constexpr std::string_view kKind = kind::ReviewLink;
};
struct AssetTag : NodeTag {};  ///< what a review link can hold: a file or a version stack
struct FileTag : AssetTag {
    static constexpr std::string_view kKind = kind::File;
};
struct StackTag : AssetTag {
    static constexpr std::string_view kKind = kind::VersionStack;
};

using NodeId = Id<NodeTag>;
using AccountId = Id<AccountTag>;
using WorkspaceId = Id<WorkspaceTag>;
using ProjectId = Id<ProjectTag>;
using FolderId = Id<FolderTag>;
using LinkId = Id<LinkTag>;
using AssetId = Id<AssetTag>;
using FileId = Id<FileTag>;  ///< of a movie: one version of its stack, or a file of its own
using StackId = Id<StackTag>;

struct UserTag : UuidForm {};
struct UploadTag : UuidForm {};
struct WholeTag : UuidForm {};
struct IdempotencyTag : UuidForm {};

using UserId = Id<UserTag>;
using UploadId = Id<UploadTag>;
using WholeId = Id<WholeTag>;               ///< chosen by the client, for the parts of one movie
using IdempotencyKey = Id<IdempotencyTag>;  ///< chosen by the client

enum class SessionId : std::int64_t {};

/// Position of a change in the feed; also the ID of its event on the wire. Numbers grow.
enum class ChangeNumber : std::int64_t {};

}  // namespace quilloservice
