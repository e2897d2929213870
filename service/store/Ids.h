#pragma once

#include <cstdint>
#include <string_view>

#include "service/base/Id.h"

namespace quilloservice {

/// The kinds of node, as named on the wire and in the store.
namespace kind {
inline constexpr std::string_view kAccount = "account";
inline constexpr std::string_view kWorkspace = "workspace";
inline constexpr std::string_view kProject = "project";
inline constexpr std::string_view kFolder = "folder";
inline constexpr std::string_view kFile = "file";
inline constexpr std::string_view kVersionStack = "version_stack";
inline constexpr std::string_view kReviewLink = "review_link";
}  // namespace kind

// Nodes: everything that belongs to an account, and the account itself.
struct NodeTag : UuidForm {};
struct AccountTag : NodeTag {
    static constexpr std::string_view kKind = kind::kAccount;
};
struct WorkspaceTag : NodeTag {
    static constexpr std::string_view kKind = kind::kWorkspace;
};
struct ProjectTag : NodeTag {
    static constexpr std::string_view kKind = kind::kProject;
};
struct FolderTag : NodeTag {
    static constexpr std::string_view kKind = kind::kFolder;
};
struct LinkTag : NodeTag {
    static constexpr std::string_view kKind = kind::kReviewLink;
};
struct AssetTag : NodeTag {};  ///< what a review link can hold: a file or a version stack
struct FileTag : AssetTag {
    static constexpr std::string_view kKind = kind::kFile;
};
struct StackTag : AssetTag {
    static constexpr std::string_view kKind = kind::kVersionStack;
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
