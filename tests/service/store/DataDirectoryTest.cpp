#include "service/store/DataDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "service/base/File.h"
#include "tests/service/ApiClient.h"
#include "tests/service/RunningService.h"
#include "tests/service/TempDirectory.h"

namespace quilloservice {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

unsigned ModeOf(fs::path const& path) {
    return static_cast<unsigned>(fs::symlink_status(path).permissions());
}

/// The error of opening the directory; empty on success.
std::string ErrorOf(std::string const& path) {
    try {
        DataDirectory directory(path);
        return {};
    } catch (std::exception const& error) {
        return error.what();
    }
}

class DataDirectoryTest : public testing::Test {
protected:
    test::TempDirectory temp;
    std::string const data = temp.GetPath() + "/data";
};

TEST_F(DataDirectoryTest, CreatesPrivateFilesWhateverTheUmask) {
    mode_t former = ::umask(0);
    {
        Options options;
        options.dataDirectory = data + "/below";
        test::RunningService service(options);
        test::ApiClient client(service.GetPort());
        client.Append(client.CreateUpload(10), 0, "begun");
        client.Upload("complete");
        int files = 0;
        for (auto const& entry : fs::recursive_directory_iterator(temp.GetPath())) {
            EXPECT_EQ(ModeOf(entry.path()), entry.is_directory() ? 0700u : 0600u) << entry.path();
            files += entry.is_directory() ? 0 : 1;
        }
        EXPECT_EQ(files, 7) << "store, WAL, WAL index, lock, port, upload, movie";
    }
    ::umask(former);
}

TEST_F(DataDirectoryTest, KeepsTheModeOfAnExistingDirectory) {
    fs::create_directory(data);
    std::ofstream(data + "/store.sqlite");
    ::chmod((data + "/store.sqlite").c_str(), 0644);
    ::chmod(data.c_str(), 0755);
    EXPECT_EQ(ErrorOf(data), "");
    EXPECT_EQ(ModeOf(data), 0755u);
    EXPECT_EQ(ModeOf(data + "/store.sqlite"), 0600u) << "files of earlier versions become private";
    fs::create_directory_symlink(data, temp.GetPath() + "/link");
    EXPECT_EQ(ErrorOf(temp.GetPath() + "/link"), "") << "a link named by the user is followed";
}

TEST_F(DataDirectoryTest, RefusesDirectoriesWritableByOthers) {
    EXPECT_EQ(ErrorOf(data), "");
    for (std::string const& path : {data, data + "/movies", data + "/uploads"}) {
        for (unsigned mode : {0720u, 0702u}) {
            ::chmod(path.c_str(), mode);
            EXPECT_EQ(ErrorOf(data), "other users can write to " + path + "; run chmod go-w '" +
                                         path + "', or name another directory with --data");
        }
        ::chmod(path.c_str(), 0700);
    }
    EXPECT_EQ(ErrorOf(data), "");
    // Only root can change an owner; other users test with a directory of root's.
    bool root = ::geteuid() == 0;
    if (root) {
        ASSERT_EQ(::chown(data.c_str(), 65534, 65534), 0);
    }
    EXPECT_THAT(ErrorOf(root ? data : "/usr"), HasSubstr("belongs to another user"));
}

TEST_F(DataDirectoryTest, RefusesLinks) {
    std::string const target = temp.GetPath() + "/target";
    for (auto [name, folder] : {std::pair("uploads", true),
                                {"movies", true},
                                {"set-aside", true},
                                {"lock", false},
                                {"store.sqlite", false},
                                {"store.sqlite-wal", false},
                                {"store.sqlite-shm", false},
                                {"port", false}}) {
        fs::create_directory(data);
        if (folder) fs::create_directory(target);
        fs::create_symlink(target, data + "/" + name);
        EXPECT_THAT(ErrorOf(data), HasSubstr(data + "/" + name + " is")) << name;
        EXPECT_THAT(ErrorOf(data), HasSubstr("a link, which is not followed")) << name;
        EXPECT_EQ(fs::exists(target), folder) << "nothing is created behind " << name;
        fs::remove_all(data);
        fs::remove_all(target);
    }
    fs::create_symlink(target, temp.GetPath() + "/movie");
    std::ofstream{target} << "somebody's";
    for (auto mode : {File::Mode::Read, File::Mode::Write})
        EXPECT_THROW(File(temp.GetPath() + "/movie", mode), std::system_error);
    EXPECT_THROW(File::OpenExisting(temp.GetPath() + "/movie"), std::system_error);
}

}  // namespace
}  // namespace quilloservice
