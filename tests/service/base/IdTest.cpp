#include "service/base/Id.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "service/oauth/ClientId.h"
#include "service/store/Ids.h"
#include "service/store/Nodes.h"

namespace quilloservice {
namespace {

template <typename One, typename Other>
concept Comparable = requires(One one, Other other) {
    one == other;
};

// IDs of different kinds neither convert nor compare.
static_assert(!std::is_convertible_v<std::string, UserId>);
static_assert(!std::is_convertible_v<UserId, std::string>);
static_assert(!std::is_constructible_v<FolderId, ProjectId>);
static_assert(!std::is_constructible_v<UploadId, FileId>);
static_assert(!std::is_constructible_v<UserId, AccountId>);
static_assert(!Comparable<UserId, AccountId> && !Comparable<FolderId, StackId>);
static_assert(Comparable<FolderId, NodeId>);

// A special kind converts implicitly to the general one, and explicitly back.
static_assert(std::is_convertible_v<FileId, AssetId> && std::is_convertible_v<FileId, NodeId>);
static_assert(std::is_constructible_v<FileId, AssetId> && !std::is_convertible_v<AssetId, FileId>);

// A reference with a kind needs an ID whose type tells the kind.
static_assert(std::is_convertible_v<FolderId, NodeRef> &&
              !std::is_constructible_v<NodeRef, NodeId>);
static_assert(!std::is_constructible_v<NodeRef, UserId>);

// Only UUIDs have a nil ID.
static_assert(!std::is_default_constructible_v<ClientId>);

TEST(Id, HoldsLowerCaseUuidsOnly) {
    std::string const good = "0123abcd-4567-89ef-0123-456789abcdef";
    EXPECT_EQ(FileId::Parse(good)->GetText(), good);
    EXPECT_EQ(FileId::ParseOrNil(good), FileId(good));
    for (char const* text :
         {"", "..", "0123ABCD-4567-89ef-0123-456789abcdef", "0123abcd-4567-89ef-0123-456789abcde",
          "0123abcd04567-89ef-0123-456789abcdef", "../../../../../../../../etc/passwd-",
          "{123abcd-4567-89ef-0123-456789abcdef", "0123abcd-4567-89ef-0123-456789abcdeg"}) {
        EXPECT_EQ(FileId::Parse(text), std::nullopt) << text;
        EXPECT_TRUE(FileId::ParseOrNil(text).IsNil()) << text;
        EXPECT_THROW(FileId{text}, std::invalid_argument) << text;
    }
    EXPECT_TRUE(FileId().IsNil());
    EXPECT_FALSE(FileId(good).IsNil());
}

TEST(Uuid, IsNewOrDerivedFromItsPath) {
    EXPECT_TRUE(IsUuid(NewUuid()));
    EXPECT_NE(NewUuid(), NewUuid());
    EXPECT_EQ(UuidOf("a/b"), UuidOf("a/b"));
    EXPECT_NE(UuidOf("a/b"), UuidOf("a/c"));
}

}  // namespace
}  // namespace quilloservice
