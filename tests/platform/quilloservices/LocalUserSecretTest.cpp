#include "quilloauth/LocalUserSecret.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include "tests/support/TemporaryDirectory.h"
#include "tests/support/UserDirectories.h"

namespace {

namespace fs = std::filesystem;
using quilloauth::FindLocalUserSecrets;
using testing::ElementsAre;
using testing::IsEmpty;

class LocalUserSecretTest : public testing::Test {
protected:
    testsupport::TemporaryDirectory directory;
    testsupport::UserDirectories const user{directory.Path()};
};

TEST_F(LocalUserSecretTest, IsLookedForByTheAddressInBothPlaces) {
    user.WriteSecret(user.Runtime(), "8080", "127.0.0.1", "here");
    user.WriteSecret(user.Cache(), "8080", "127.0.0.1", "there");
    user.WriteSecret(user.Runtime(), "8080", "::1", "six");
    user.WriteSecret(user.Runtime(), "80", "127.0.0.1", "plain");
    user.WriteSecret(user.Runtime(), "8080", "192.0.2.1", "far");
    EXPECT_THAT(FindLocalUserSecrets("http://127.0.0.1:8080"), ElementsAre("here", "there"));
    EXPECT_THAT(FindLocalUserSecrets("http://[::1]:8080"), ElementsAre("six"));
    EXPECT_THAT(FindLocalUserSecrets("http://localhost:8080"), ElementsAre("here", "six", "there"));
    EXPECT_THAT(FindLocalUserSecrets("http://127.0.0.1"), ElementsAre("plain"));
    for (char const* other : {"http://127.0.0.1:8081", "http://127.0.0.2:8080", "https://127.0.0.1",
                              "http://192.0.2.1:8080", "http://service.example:8080", ""})
        EXPECT_THAT(FindLocalUserSecrets(other), IsEmpty()) << other;
}

TEST_F(LocalUserSecretTest, IsNotTakenFromWhereOthersCouldReadOrWriteIt) {
    auto const port = user.Runtime() / "quillo" / "8080";
    auto const file = port / "127.0.0.1.secret";
    auto const elsewhere = directory.Path() / "elsewhere";
    struct Row {
        char const* what;
        bool taken;
        std::function<void()> change;
    };
    std::vector<Row> rows = {
        {"as it should be", true, [] {}},
        {"others may read the file", false, [&] { chmod(file.c_str(), 0604); }},
        {"the group may write the file", false, [&] { chmod(file.c_str(), 0620); }},
        {"others may list the directory", false, [&] { chmod(port.c_str(), 0705); }},
        {"others may put another in its place", false,
         [&] { chmod(port.parent_path().c_str(), 0702); }},
        {"a link to a file", false,
         [&] {
             fs::rename(file, elsewhere);
             fs::create_symlink(elsewhere, file);
         }},
        {"a link to a directory", false,
         [&] {
             fs::rename(port, elsewhere);
             fs::create_directory_symlink(elsewhere, port);
         }},
        {"a pipe", false,
         [&] {
             fs::remove(file);
             mkfifo(file.c_str(), 0600);
         }},
        {"empty", false, [&] { fs::resize_file(file, 0); }},
    };
    if (geteuid() == 0) {
        rows.push_back(
            {"another user's file", false, [&] { ASSERT_EQ(chown(file.c_str(), 1, 1), 0); }});
        rows.push_back(
            {"another user's directory", false, [&] { ASSERT_EQ(chown(port.c_str(), 1, 1), 0); }});
    }
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        fs::remove_all(user.Runtime());
        fs::remove_all(elsewhere);
        user.WriteSecret(user.Runtime(), "8080", "127.0.0.1", "secret");
        row.change();
        EXPECT_EQ(FindLocalUserSecrets("http://127.0.0.1:8080").size(), row.taken ? 1u : 0u);
    }
}

}  // namespace
