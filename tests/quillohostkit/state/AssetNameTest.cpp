#include "quillohostkit/state/AssetName.h"

#include <gmock/gmock.h>

namespace quillohostkit {
namespace {

TEST(AssetName, IsTheFilesNameWithoutItsLastExtension) {
    EXPECT_EQ(DefaultAssetName("/films/My cut.v2.mov"), "My cut.v2");
    EXPECT_EQ(DefaultAssetName("/films/.mov"), ".mov");
}

}  // namespace
}  // namespace quillohostkit
