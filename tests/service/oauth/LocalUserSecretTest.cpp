#include "service/oauth/LocalUserSecret.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#include "tests/service/TempDirectory.h"

namespace quilloservice {
namespace {

namespace fs = std::filesystem;

class LocalUserSecretTest : public testing::Test {
protected:
    LocalUserSecretTest() {
        fs::create_directory(runtime);
        Set("XDG_RUNTIME_DIR", runtime);
        Set("HOME", directory.GetPath());
    }
    ~LocalUserSecretTest() override {
        for (auto const& [name, value] : before)
            value ? ::setenv(name, value->c_str(), 1) : ::unsetenv(name);
    }

    void Set(char const* name, std::string const& value) {
        char const* old = std::getenv(name);
        before.emplace_back(name, old != nullptr ? std::optional<std::string>(old) : std::nullopt);
        ::setenv(name, value.c_str(), 1);
    }

    static std::string Read(fs::path const& file) {
        std::string secret;
        std::ifstream(file) >> secret;
        return secret;
    }

    static mode_t ModeOf(fs::path const& path) {
        struct stat status {};
        return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    }

    test::TempDirectory directory;
    fs::path runtime = directory.GetPath() + "/run";
    fs::path cache = directory.GetPath() + "/.cache";
    std::vector<std::pair<char const*, std::optional<std::string>>> before;
};

TEST_F(LocalUserSecretTest, WritesAPrivateFileAndRemovesIt) {
    fs::path file = runtime / "quillo/8080/127.0.0.1.secret";
    fs::create_directories(file.parent_path());
    fs::permissions(file.parent_path(), fs::perms::owner_all);
    std::ofstream(file) << "left by a service that was killed\n";
    fs::permissions(file, fs::perms::all);
    {
        ::umask(0);
        LocalUserSecret secret("127.0.0.1", 8080);
        ::umask(022);
        EXPECT_EQ(ModeOf(file), 0600u);
        EXPECT_EQ(ModeOf(file.parent_path()), 0700u);
        EXPECT_TRUE(secret.Is(Read(file)));
        EXPECT_FALSE(secret.Is(""));
        LocalUserSecret another("::1", 8080);
        EXPECT_FALSE(another.Is(Read(file)));
        EXPECT_TRUE(another.Is(Read(runtime / "quillo/8080/::1.secret")));
        EXPECT_FALSE(LocalUserSecret("192.0.2.1", 8080).Is(""));
    }
    EXPECT_FALSE(fs::exists(runtime / "quillo/8080"));
    auto former = std::make_optional<LocalUserSecret>("0.0.0.0", 8080);
    LocalUserSecret latter("127.0.0.1", 8080);
    former.reset();
    EXPECT_TRUE(latter.Is(Read(file))) << "the file of a later service is kept";
}

TEST_F(LocalUserSecretTest, FallsBackToTheCacheIfTheRuntimeDirectoryIsNotPrivate) {
    struct Row {
        char const* what;
        std::function<void()> spoil;
    };
    fs::path elsewhere = directory.GetPath() + "/elsewhere";
    fs::create_directory(elsewhere);
    fs::path inCache = cache / "quillo/8080/127.0.0.1.secret";
    for (Row const& row : std::vector<Row>{
             {"others may write", [&] { ::chmod(runtime.c_str(), 0777); }},
             {"a link", [&] { fs::create_directory_symlink(elsewhere, runtime / "quillo"); }},
             {"others may read",
              [&] {
                  fs::create_directories(runtime / "quillo/8080");
                  ::chmod((runtime / "quillo/8080").c_str(), 0755);
              }},
             {"it is missing", [&] { fs::remove_all(runtime); }},
         }) {
        SCOPED_TRACE(row.what);
        fs::remove_all(runtime);
        fs::create_directory(runtime);
        ::chmod(runtime.c_str(), 0700);
        row.spoil();
        LocalUserSecret secret("127.0.0.1", 8080);
        EXPECT_TRUE(secret.Is(Read(inCache)));
        EXPECT_TRUE(fs::is_empty(elsewhere));
    }
    fs::create_directories(cache);
    ::chmod(cache.c_str(), 0777);
    try {
        LocalUserSecret secret("127.0.0.1", 8080);
        ADD_FAILURE() << "accepted a directory that others can write";
    } catch (std::runtime_error const& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("run chmod go-w '" + cache.string() + "'"));
    }
}

}  // namespace
}  // namespace quilloservice
