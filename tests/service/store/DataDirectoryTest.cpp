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

/// What is wrong with the directory, in the service's words; nothing when it takes it.
std::string Complaint(std::string const& path) {
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

TEST_F(DataDirectoryTest, IsClosedToOthersWhateverTheUmask) {
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
        EXPECT_EQ(files, 7) << "store, WAL and its index, lock, port, upload, movie";
    }
    ::umask(former);
}

TEST_F(DataDirectoryTest, LeavesTheModeOfADirectoryThatIsThere) {
    fs::create_directory(data);
    std::ofstream(data + "/store.sqlite");
    ::chmod((data + "/store.sqlite").c_str(), 0644);
    ::chmod(data.c_str(), 0755);
    EXPECT_EQ(Complaint(data), "");
    EXPECT_EQ(ModeOf(data), 0755u);
    EXPECT_EQ(ModeOf(data + "/store.sqlite"), 0600u) << "as earlier versions made it";
    fs::create_directory_symlink(data, temp.GetPath() + "/link");
    EXPECT_EQ(Complaint(temp.GetPath() + "/link"), "") << "the user has named it so";
}

TEST_F(DataDirectoryTest, IsRefusedWhereOthersCanWrite) {
    EXPECT_EQ(Complaint(data), "");
    for (std::string const& path : {data, data + "/movies", data + "/uploads"}) {
        for (unsigned mode : {0720u, 0702u}) {
            ::chmod(path.c_str(), mode);
            EXPECT_EQ(Complaint(data), "other users can write to " + path + "; run chmod go-w '" +
                                           path + "', or name another directory with --data");
        }
        ::chmod(path.c_str(), 0700);
    }
    EXPECT_EQ(Complaint(data), "");
    // Only root can give a directory away; anybody else finds one that is not his.
    bool root = ::geteuid() == 0;
    if (root) {
        ASSERT_EQ(::chown(data.c_str(), 65534, 65534), 0);
    }
    EXPECT_THAT(Complaint(root ? data : "/usr"), HasSubstr("belongs to another user"));
}

TEST_F(DataDirectoryTest, IsRefusedWithALinkInIt) {
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
        EXPECT_THAT(Complaint(data), HasSubstr(data + "/" + name + " is")) << name;
        EXPECT_THAT(Complaint(data), HasSubstr("a link, which is not followed")) << name;
        EXPECT_EQ(fs::exists(target), folder) << "nothing may be made behind " << name;
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
