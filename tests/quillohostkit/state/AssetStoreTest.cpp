#include "quillohostkit/state/AssetStore.h"

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include "quillohostkit/process/Failure.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohostkit {
namespace {

using moxcore::utility::Guid;

class AssetStoreTest : public testing::Test {
protected:
    testsupport::TemporaryDirectory directory;
    std::filesystem::path const file = directory.Path() / "assets.sqlite";
};

TEST_F(AssetStoreTest, RemembersWhatItWasToldForEachServiceApart) {
    IDPath const path{Guid::CreateUnique(), Guid::CreateUnique()};
    AssetID asset;
    {
        AssetStore store(file, "one");
        asset = store.AssetOf("/films/a.mov");
        EXPECT_EQ(store.Read(asset, "link"), std::nullopt);
        store.Write(asset, "link", "first");
        store.Write(asset, "link", "second");
        store.Write(asset, "gone", "x");
        store.Forget(asset, "gone");
        store.WriteDefaultDestination({{path[1]}, "before"});
        store.WriteDefaultDestination({path, "Acme/Films"});
    }
    AssetStore again(file, "one");
    EXPECT_EQ(again.Read(asset, "link"), "second");
    EXPECT_EQ(again.Read(asset, "gone"), std::nullopt);
    auto const destination = again.ReadDefaultDestination();
    ASSERT_TRUE(destination);
    EXPECT_EQ(destination->idPath, path);
    EXPECT_EQ(destination->namePath, "Acme/Films");

    AssetStore other(file, "two");
    EXPECT_EQ(other.Read(asset, "link"), std::nullopt);
    EXPECT_FALSE(other.ReadDefaultDestination());
    other.ForgetDefaultDestination();
    EXPECT_TRUE(again.ReadDefaultDestination());
    again.ForgetDefaultDestination();
    EXPECT_FALSE(again.ReadDefaultDestination());
}

TEST_F(AssetStoreTest, NamesAMovieByItsPathWhateverBytesThatHas) {
    AssetStore store(file, "one");
    auto const movie = store.AssetOf("/films/\xFF'.mov");
    auto const other = store.AssetOf("/films/\xFE'.mov");
    EXPECT_EQ(movie.store, other.store);
    EXPECT_NE(movie.asset, other.asset);
    EXPECT_FALSE(movie.store.IsNull() || movie.asset.IsNull());
    EXPECT_EQ(AssetStore(file, "two").AssetOf("/films/\xFF'.mov").asset, movie.asset);
}

/// Also by those that find no store yet, and of which one makes it.
TEST_F(AssetStoreTest, IsSharedByProcessesThatBeginAndWriteAtOnce) {
    constexpr int kProcesses = 8;
    for (int round = 0; round < 20; ++round) {
        auto const shared = directory.Path() / std::to_string(round);
        int gate[2];
        ASSERT_EQ(pipe(gate), 0);
        for (int i = 0; i < kProcesses; ++i) {
            if (fork() != 0) continue;
            close(gate[1]);
            char opened = 0;
            bool const waited = read(gate[0], &opened, 1) == 0;
            try {
                AssetStore store(shared, "one");
                store.Write(store.AssetOf("/films/a.mov"), std::to_string(i), "written");
                _exit(waited ? 0 : 1);
            } catch (...) {
                _exit(1);
            }
        }
        close(gate[0]);
        close(gate[1]);
        for (int i = 0; i < kProcesses; ++i) {
            int status = 0;
            ASSERT_GT(wait(&status), 0);
            EXPECT_EQ(status, 0);
        }
        AssetStore store(shared, "one");
        auto const asset = store.AssetOf("/films/a.mov");
        for (int i = 0; i < kProcesses; ++i)
            EXPECT_EQ(store.Read(asset, std::to_string(i)), "written");
    }
}

TEST_F(AssetStoreTest, TakesOverWhatAnEarlierVersionHasKept) {
    AssetID asset;
    {
        AssetStore store(file, "one");
        asset = store.AssetOf("/films/a.mov");
        store.Write(asset, quillomoxui::assetdata::kVersionStackGuid, "stack");
    }
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
    auto const id =
        "'one', '" + asset.store.AsStdString() + "', '" + asset.asset.AsStdString() + "'";
    auto const former =
        "CREATE TABLE ways (service, library, movie, way);"
        "CREATE TABLE versions (service, version_stack, count);"
        "INSERT INTO ways VALUES (" +
        id +
        ", 'a b ');"
        "INSERT INTO versions VALUES ('one', 'stack', 3)";
    EXPECT_EQ(sqlite3_exec(database, former.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);

    for (int opened = 0; opened < 2; ++opened) {
        AssetStore store(file, "one");
        EXPECT_EQ(store.Read(asset, stringkeys::kLocation), "a b ");
        EXPECT_EQ(store.Read(asset, stringkeys::kVersions), "stack 3");
    }
}

TEST_F(AssetStoreTest, SaysWhichFileCannotBeUsed) {
    auto const noDatabase = directory.Write("notes.txt", std::string(4096, 'x'));
    for (auto const& path : {noDatabase, directory.Path() / "missing" / "assets.sqlite"}) {
        try {
            AssetStore const store(path, "one");
            ADD_FAILURE() << path;
        } catch (Failure const& failure) {
            EXPECT_THAT(failure.what(), testing::HasSubstr(path.string()));
        }
    }
}

}  // namespace
}  // namespace quillohostkit
