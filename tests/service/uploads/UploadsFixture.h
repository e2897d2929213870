#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "service/store/ChangeFeed.h"
#include "service/store/DataDirectory.h"
#include "service/store/SampleData.h"
#include "service/store/Store.h"
#include "service/uploads/Uploads.h"
#include "tests/service/ApiClient.h"
#include "tests/service/TempDirectory.h"
#include "tests/service/TestStore.h"

namespace quilloservice {

/// The uploads of the small sample's user, on a clock and a disk of the test's.
class UploadsFixture : public testing::Test {
protected:
    UploadsFixture() {
        MakeSampleData(store, SampleSize::Small);
        Restart();
        store.Read([&](Database& database) {
            Statement row = database.Query(
                "SELECT id FROM nodes JOIN memberships ON memberships.account = nodes.account "
                "WHERE kind = 'folder' AND user = ? ORDER BY seq LIMIT 2",
                user);
            row.Next();
            folder = row.Id<FolderId>(0);
            row.Next();
            otherFolder = row.Id<FolderId>(0);
        });
    }

    /// Discards all state in memory, like a restart of the process.
    void Restart() {
        uploads = std::make_unique<Uploads>(
            directory, store, changes, [this] { return now; }, [this] { return freeBytes; });
        uploads->Recover();
    }

    std::int64_t Offset(UploadId const& id) { return uploads->Get(user, id).confirmed; }

    /// The bytes of the published movie.
    std::string Movie(UploadId const& id) {
        std::ifstream file(directory.MoviePath(uploads->Asset(user, id).id), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    test::TempDirectory temp;
    DataDirectory directory{temp.GetPath()};
    std::unique_ptr<Store> const engine = test::OpenStore(temp.GetPath());
    Store& store = *engine;
    ChangeFeed changes{store};
    std::int64_t now = 1'000'000;
    std::int64_t freeBytes = Uploads::kMaxBytes;
    UserId user = SampleUserId();
    FolderId folder;
    FolderId otherFolder;
    std::unique_ptr<Uploads> uploads;
    std::string const content = test::Noise(1'000'000);
};

}  // namespace quilloservice
