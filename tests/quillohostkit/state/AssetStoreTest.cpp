#include "quillohostkit/state/AssetStore.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "quillohostkit/process/Failure.h"
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
    Guid const stack = Guid::CreateUnique();
    IDPath const path{Guid::CreateUnique(), Guid::CreateUnique()};
    AssetStore::Asset asset;
    {
        AssetStore store(file, "one");
        asset = store.AssetOf("/films/a.mov");
        EXPECT_EQ(store.Read(asset, "link"), std::nullopt);
        store.Write(asset, "link", "first");
        store.Write(asset, "link", "second");
        store.Write(asset, "gone", "x");
        store.Forget(asset, "gone");
        store.WriteIDPath(asset, path);
        store.WriteDefaultDestination({{stack}, "before"});
        store.WriteDefaultDestination({path, "Acme/Films"});
        EXPECT_EQ(store.AddVersion(stack), 1);
        EXPECT_EQ(store.AddVersion(stack), 2);
    }
    AssetStore again(file, "one");
    EXPECT_EQ(again.Read(asset, "link"), "second");
    EXPECT_EQ(again.Read(asset, "gone"), std::nullopt);
    EXPECT_EQ(again.ReadIDPath(asset), path);
    EXPECT_EQ(again.CountVersions(stack), 2);
    auto const destination = again.ReadDefaultDestination();
    ASSERT_TRUE(destination);
    EXPECT_EQ(destination->idPath, path);
    EXPECT_EQ(destination->namePath, "Acme/Films");

    AssetStore other(file, "two");
    EXPECT_EQ(other.Read(asset, "link"), std::nullopt);
    EXPECT_TRUE(other.ReadIDPath(asset).empty());
    EXPECT_EQ(other.CountVersions(stack), 0);
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
    EXPECT_EQ(movie.library, other.library);
    EXPECT_NE(movie.movie, other.movie);
    EXPECT_FALSE(movie.library.IsNull() || movie.movie.IsNull());
    EXPECT_EQ(AssetStore(file, "two").AssetOf("/films/\xFF'.mov").movie, movie.movie);
}

/// Also by those that find no store yet, and of which one makes it.
TEST_F(AssetStoreTest, IsSharedByProcessesThatBeginAndWriteAtOnce) {
    constexpr int kProcesses = 8;
    constexpr int kWrites = 1;
    Guid const stack = Guid::CreateUnique();
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
                for (int write = 0; write < kWrites; ++write)
                    store.AddVersion(stack);
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
        EXPECT_EQ(AssetStore(shared, "one").CountVersions(stack), kProcesses * kWrites);
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
