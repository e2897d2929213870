#include <gtest/gtest.h>

#include <thread>

#include "service/base/Clock.h"
#include "service/base/Uuid.h"
#include "service/store/ChangeFeed.h"
#include "service/store/Idempotency.h"
#include "service/store/Nodes.h"
#include "service/store/ReviewLinks.h"
#include "service/store/SampleData.h"
#include "service/store/sqlite/SqliteStore.h"
#include "tests/service/TempDirectory.h"
#include "tests/service/TestStore.h"

namespace quilloservice {
namespace {

AccountId AccountNamed(std::string const& name) {
    return AccountId(UuidOf("account/" + name));
}

/// Runs on the engine under test.
class StoreTest : public testing::Test {
protected:
    StoreTest() { MakeSampleData(*store, SampleSize::Small); }

    std::int64_t Number(std::string const& sql) {
        return store->Read([&](Database& database) {
            Statement row = database.Query(sql);
            row.Next();
            return row.Integer(0);
        });
    }

    test::TempDirectory directory;
    std::unique_ptr<Store> store = test::OpenStore(directory.GetPath());
};

TEST_F(StoreTest, KeepsValuesAsTheyAre) {
    std::string const text = "O'Neill \\ \"?1\" ?\n\t $1 user 撮影";
    std::int64_t const large = std::int64_t{5} << 40;
    UserId const user = SampleUserId();
    std::string parts;  // of as many uploads as a request can name
    for (int i = 0; i < 160; ++i)
        parts += UuidOf(std::to_string(i)) + " ";
    store->Write([&](Database& database) {
        for (auto const& [id, stack] :
             {std::pair<char const*, std::optional<StackId>>("a", std::nullopt),
              {"b", StackId(UuidOf("stack"))}}) {
            EXPECT_EQ(database.Run("INSERT INTO uploads (id, user, asset, folder, stack, name, "
                                   "media_type, metadata, length, touched_at, parts) "
                                   "VALUES (?1, ?2, 'x', 'x', ?3, ?4, '', '', ?5, ?5, ?6)",
                                   std::string_view(id), user, stack, text, large, parts),
                      1);
        }
    });
    // A new connection to the same records.
    store = test::OpenStore(directory.GetPath());
    store->Read([&](Database& database) {
        Statement row = database.Query(
            "SELECT name, length, stack, stack IS NULL, user, confirmed FROM uploads "
            "WHERE user = ? ORDER BY id",
            user);
        for (bool isNull : {true, false}) {
            ASSERT_TRUE(row.Next());
            EXPECT_EQ(row.Text(0), text);
            EXPECT_EQ(row.Integer(1), large);
            EXPECT_EQ(row.OptionalId<StackId>(2).has_value(), !isNull);
            EXPECT_EQ(row.Integer(3), isNull ? 1 : 0);
            EXPECT_EQ(row.Id<UserId>(4), user);
            EXPECT_EQ(row.Integer(5), 0);
        }
        EXPECT_FALSE(row.Next());
    });
}

TEST_F(StoreTest, RollsBackWhatThrows) {
    EXPECT_THROW(store->Write([](Database& database) {
        database.Run("DELETE FROM memberships");
        throw std::runtime_error("no");
    }),
                 std::runtime_error);
    for (char const* sql :
         {"INSERT INTO users (id, name) SELECT id, name FROM users",
          "INSERT INTO memberships (user, account) VALUES ('nobody', 'none')", "no SQL"}) {
        EXPECT_THROW(store->Write([&](Database& database) {
            database.Run("DELETE FROM memberships");
            database.Run(sql);
        }),
                     DatabaseError)
            << sql;
    }
    EXPECT_GT(Number("SELECT count(*) FROM memberships"), 0);
}

TEST_F(StoreTest, RefusesTablesOfANewerVersion) {
    bool isServer = !test::DatabaseFor(directory.GetPath()).empty();
    store->Write([&](Database& database) {
        database.RunScript(isServer ? "UPDATE store_info SET version = 99"
                                    : "PRAGMA user_version = 99");
    });
    try {
        test::OpenStore(directory.GetPath());
        FAIL();
    } catch (std::runtime_error const& error) {
        EXPECT_STREQ(error.what(), "a newer quillo-service wrote the store");
    }
}

TEST_F(StoreTest, LosesNoUpdateOfConcurrentTransactions) {
    constexpr int kThreads = 6;
    constexpr int kTimes = 20;
    NodeId const node = AccountNamed("Northlight Pictures");
    std::int64_t before =
        Number("SELECT max(version) FROM nodes WHERE id = '" + node.GetText() + "'");
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < kTimes; ++i) {
                store->Write(
                    [&](Database& database) {
                        std::int64_t version = FindNode(database, node)->version;
                        database.Run("UPDATE nodes SET version = ? WHERE id = ?", version + 1,
                                     node);
                    },
                    i % 2 == 0 ? Store::Durability::Disk : Store::Durability::Process);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(Number("SELECT version FROM nodes WHERE id = '" + node.GetText() + "'"),
              before + kThreads * kTimes);
}

TEST_F(StoreTest, CreatesOneLinkForConcurrentRequestsWithOneKey) {
    ReviewLinks links(*store, SystemTime);
    ProjectId const project(store->Read([](Database& database) {
        Statement row = database.Query(
            "SELECT id FROM nodes WHERE kind = ? AND name = 'The Long River'", kind::kProject);
        row.Next();
        return row.Text(0);
    }));
    for (int round = 0; round < 10; ++round) {
        IdempotencyKey const key(NewUuid());
        std::vector<NodeId> made(6);
        std::vector<std::thread> threads;
        for (NodeId& id : made) {
            threads.emplace_back(
                [&] { id = links.Create(SampleUserId(), project, "Review", key).id; });
        }
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(made, std::vector<NodeId>(made.size(), made.front()));
    }
}

TEST(SqliteStoreTest, UpgradesFromTheFirstVersion) {
    test::TempDirectory directory;
    std::string path = directory.GetPath() + "/store.sqlite";
    IdempotentRequest const request{SampleUserId(), IdempotencyKey(NewUuid()), "review link"};
    LinkId const made(NewUuid());
    {
        SqliteStore store(path);
        MakeSampleData(store, SampleSize::Small);
        store.Write([&](Database& database) {
            RememberResult(database, request, made, 0);
            for (char const* index :
                 {"open_uploads_by_file", "open_uploads_by_whole", "joined_uploads"})
                database.RunScript("DROP INDEX " + std::string(index));
            for (char const* column : {"kind", "file", "place", "whole", "whole_length", "parts"})
                database.RunScript("ALTER TABLE uploads DROP COLUMN " + std::string(column));
            database.RunScript(
                "DROP TABLE changes; DROP INDEX idempotency_keys_by_time;"
                "ALTER TABLE idempotency_keys DROP COLUMN used_at;"
                "DROP INDEX tokens_by_parent; ALTER TABLE tokens DROP COLUMN parent;"
                "ALTER TABLE tokens DROP COLUMN used_at; PRAGMA user_version = 1");
        });
    }
    SqliteStore store(path);
    ChangeFeed changes(store);
    ChangeNumber before = changes.Position();
    store.Write([&](Database& database) {
        ChangeFeed::RecordAccounts(database, AccountNamed("Northlight Pictures"));
        EXPECT_EQ(FindRepeated<LinkId>(database, request, SystemTime()), made)
            << "keys count from the upgrade";
    });
    EXPECT_EQ(changes.After(before, SampleUserId(), 9).size(), 1u);
}

}  // namespace
}  // namespace quilloservice
