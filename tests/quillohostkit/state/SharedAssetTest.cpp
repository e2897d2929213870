#include "quillohostkit/state/SharedAsset.h"

#include <gmock/gmock.h>

#include "quillohostkit/process/Failure.h"
#include "quillohostkit/state/AssetStore.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohostkit {
namespace {

namespace assetdata = quillomoxui::assetdata;

TEST(SharedAsset, HasAnotherLinkMadeAfterOneThatIsNoWebAddress) {
    testsupport::TemporaryDirectory const directory;
    auto const store = std::make_shared<AssetStore>(directory.Path() / "assets.sqlite", "service");
    SharedAsset const asset(store, store->AssetOf("/films/a.mov"), "a");
    auto const write = [&](char const* key) { store->Write(asset.GetID(), key, "kept"); };
    for (char const* key :
         {assetdata::kReviewLinkGuid, assetdata::kReviewLinkURL, assetdata::kVersionStackGuid})
        write(key);

    EXPECT_EQ(asset.CheckLink("https://review.example/r/1"), "https://review.example/r/1");
    EXPECT_EQ(asset.Stored(assetdata::kReviewLinkURL), "kept");
    try {
        static_cast<void>(asset.CheckLink("file:///etc/passwd"));
        ADD_FAILURE();
    } catch (Failure const& failure) {
        EXPECT_EQ(failure.GetKind(), FailureKind::Link);
    }
    EXPECT_EQ(asset.Stored(assetdata::kReviewLinkURL), "");
    EXPECT_EQ(asset.Stored(assetdata::kReviewLinkGuid), "");
    EXPECT_EQ(asset.Stored(assetdata::kVersionStackGuid), "kept");
}

TEST(SharedAsset, CountsTheVersionsOfItsPresentVersionStack) {
    testsupport::TemporaryDirectory const directory;
    auto const store = std::make_shared<AssetStore>(directory.Path() / "assets.sqlite", "service");
    auto const asset = std::make_shared<SharedAsset>(store, store->AssetOf("/films/a.mov"), "a");
    store->Write(asset->GetID(), assetdata::kVersionStackGuid, "stack");
    EXPECT_EQ(asset->Version(), 0);
    store->Write(asset->GetID(), stringkeys::kVersions, "stack 2");
    EXPECT_EQ(asset->Version(), 2);
    store->Write(asset->GetID(), assetdata::kVersionStackGuid, "another");
    EXPECT_EQ(asset->Version(), 0);
}

}  // namespace
}  // namespace quillohostkit
