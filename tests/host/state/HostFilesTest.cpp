#include "host/state/HostFiles.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "quillohostkit/process/Failure.h"
#include "quillohostkit/state/AssetStore.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohost {
namespace {

namespace fs = std::filesystem;

TEST(HostFiles, AreClosedToOthersAndNoLinks) {
    testsupport::TemporaryDirectory directory;
    UseDataDirectory(directory.Path() / "state");
    auto const former = umask(0);
    quillohostkit::AssetStore store(OwnHostFile("assets.sqlite"), "service");
    static_cast<void>(store.AssetOf("/films/a.mov"));
    umask(former);
    for (auto const& entry : fs::recursive_directory_iterator(directory.Path()))
        EXPECT_EQ(entry.status().permissions(), fs::perms(entry.is_directory() ? 0700 : 0600))
            << entry.path();

    auto const file = HostDataFile("locks");
    directory.Write("state/data/locks", "as an earlier version made it");
    fs::permissions(file, fs::perms(0644));
    EXPECT_EQ(OwnHostFile("locks"), file);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
    fs::remove(file);
    fs::create_symlink(directory.Path() / "elsewhere", file);
    EXPECT_THROW(static_cast<void>(OwnHostFile("locks")), quillohostkit::Failure);
    EXPECT_FALSE(fs::exists(directory.Path() / "elsewhere"));
}

}  // namespace
}  // namespace quillohost
