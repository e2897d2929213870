#include "host/AssetName.h"

#include <gmock/gmock.h>

namespace quillohost {
namespace {

TEST(AssetName, IsTheFilesNameWithoutItsLastExtension) {
    EXPECT_EQ(DefaultAssetName("/films/My cut.v2.mov"), "My cut.v2");
    EXPECT_EQ(DefaultAssetName("/films/.mov"), ".mov");
}

TEST(AssetName, IsShortenedBetweenTwoCharacters) {
    struct Row {
        char const* name;
        std::size_t bytes;
        char const* shortened;
    };
    Row const rows[] = {
        {"short", 5, "short"}, {"longer", 5, "longe"}, {"é", 1, ""},
        {"aé", 2, "a"},        {"aéb", 3, "aé"},       {"🎬🎬", 7, "🎬"},
    };
    for (auto const& row : rows)
        EXPECT_EQ(Shorten(row.name, row.bytes), row.shortened) << row.name;
}

}  // namespace
}  // namespace quillohost
