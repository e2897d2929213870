#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "moxcore/config/Error.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"
#include "tests/support/TemporaryDirectory.h"

using namespace moxcore::filesupport;
using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

class CommonDirs : public testing::Test {
protected:
    CommonDirs() {
        Set("HOME", home);
        commondirs::SetApplicationName(UTF8to16("vorschau"));
    }
    ~CommonDirs() override { commondirs::SetUserRoot({}); }

    static void Set(char const* name, std::string const& value) {
        setenv(name, value.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
    }

    static mode_t Mode(fs::path const& path) {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
    }

    /// Why a directory is not to be had; nothing when it is.
    static std::string Complaint(File (*ask)()) {
        try {
            static_cast<void>(ask());
            return {};
        } catch (moxcore::config::ResultException const& failure) {
            return failure.what();
        }
    }

    testsupport::TemporaryDirectory directory;
    fs::path const home = directory.Path() / "Zuhause ü";
};

TEST_F(CommonDirs, LieWhereXdgHasThemAndAreClosedToOthers) {
    struct Case {
        char const* variable;
        File (*ask)();
        char const* belowHome;
    };
    for (auto const& [variable, ask, belowHome] :
         {Case{"XDG_CACHE_HOME", commondirs::UserCacheDir, ".cache/vorschau"},
          Case{"XDG_CONFIG_HOME", commondirs::UserConfigDir, ".config/vorschau"},
          Case{"XDG_DATA_HOME", commondirs::UserDataDir, ".local/share/vorschau"},
          Case{"XDG_STATE_HOME", commondirs::UserStateDir, ".local/state/vorschau"}}) {
        SCOPED_TRACE(variable);
        for (auto const& [value, expected] :
             {std::pair<std::string, fs::path>{"", home / belowHome},
              {"relative/is/ignored", home / belowHome},
              {directory.Path() / variable, directory.Path() / variable / "vorschau"}}) {
            Set(variable, value);
            EXPECT_EQ(UTF16to8(ask().FullPath()), expected);
            EXPECT_EQ(Mode(expected), 0700u);
        }
    }
}

TEST_F(CommonDirs, LieBelowTheRootThatTheHostNames) {
    commondirs::SetUserRoot(UTF8to16((directory.Path() / "root").string()));
    fs::create_directories(directory.Path() / "root/data");
    fs::permissions(directory.Path() / "root/data", fs::perms(0755));
    EXPECT_EQ(UTF16to8(commondirs::UserDataDir().FullPath()), directory.Path() / "root/data");
    EXPECT_EQ(Mode(directory.Path() / "root/data"), 0700u) << "was open to others before";
}

TEST_F(CommonDirs, LieBelowNoRootThatIsOpenToOthersAndBehindNoLinkInIt) {
    auto const root = directory.Path() / "root";
    auto const elsewhere = directory.Path() / "elsewhere";
    commondirs::SetUserRoot(UTF8to16(root.string()));
    for (auto const& folder : {root, elsewhere}) {
        fs::create_directory(folder);
        fs::permissions(folder, fs::perms(0755));
    }
    fs::create_directory_symlink(elsewhere, root / "data");
    EXPECT_THAT(Complaint(commondirs::UserDataDir), HasSubstr("data\": it is a link"));
    EXPECT_EQ(Mode(elsewhere), 0755u);
    EXPECT_EQ(Complaint(commondirs::UserCacheDir), "");
    EXPECT_EQ(Mode(root), 0755u) << "the root is as its user wants it";
    for (unsigned const mode : {0720u, 0702u}) {
        fs::permissions(root, fs::perms(mode));
        EXPECT_THAT(Complaint(commondirs::UserCacheDir), HasSubstr("other users can write to it"));
    }
    // Only root can give a directory away; anybody else finds one that is not his.
    fs::permissions(root, fs::perms(0700));
    if (geteuid() == 0) {
        ASSERT_EQ(chown(root.c_str(), 65534, 65534), 0);
    } else {
        commondirs::SetUserRoot(UTF8to16("/usr"));
    }
    EXPECT_THAT(Complaint(commondirs::UserCacheDir), HasSubstr("it belongs to another user"));
}

TEST_F(CommonDirs, NameTheDirectoryThatCannotBeMade) {
    directory.Write("file", "");
    directory.Write("cache", "");
    for (auto const& [root, named] :
         {std::pair(directory.Path(), directory.Path() / "cache"),
          std::pair(directory.Path() / "file", directory.Path() / "file")}) {
        commondirs::SetUserRoot(UTF8to16(root.string()));
        EXPECT_THAT(Complaint(commondirs::UserCacheDir), HasSubstr(named.string() + "\""));
    }
}

TEST(File, NamesAndRemovesAnEntryOfADirectory) {
    testsupport::TemporaryDirectory directory;
    auto const path = directory.Write("Größe 🎬.mp4", "movie");
    for (auto const& parent : {directory.Text(), directory.Text() + UTF8to16("/")}) {
        File const file(File(parent, 0), UTF8to16("Größe 🎬.mp4"));
        EXPECT_EQ(UTF16to8(file.FullPath()), path);
    }
    File const file(UTF8to16(path.string()), 0);
    EXPECT_TRUE(file.Exists());
    EXPECT_TRUE(file.Delete());
    EXPECT_FALSE(file.Exists());
    EXPECT_TRUE(file.Delete()) << "gone is gone";
    fs::create_directory(path);
    EXPECT_FALSE(file.Delete()) << "a directory is no file";
}

}  // namespace
