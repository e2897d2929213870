#include "quilloauth/FileTokenStore.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace std::chrono_literals;
using quilloauth::FileTokenStore;
using quilloauth::Tokens;

mode_t ModeOf(std::filesystem::path const& path) {
    struct stat status {};
    stat(path.c_str(), &status);
    return status.st_mode & 0777;
}

constexpr char kService[] = "http://a.test";
Tokens const kTokens{"access-of-a-test", "refresh-of-a-test", moxcore::threads::TimePoint(5000s)};

class FileTokenStoreTest : public testing::Test {
protected:
    testsupport::TemporaryDirectory directory;
    std::filesystem::path const path = directory.Path() / "tokens.json";
    FileTokenStore store{path.string()};
};

TEST_F(FileTokenStoreTest, KeepsOnePairForEachServiceInAFileOfItsOwnersOnly) {
    Tokens const others{"the-other-access", "the-other-refresh", moxcore::threads::TimePoint(7s)};
    store.Save(kService, kTokens);
    store.Save("http://b.test", others);
    EXPECT_EQ(ModeOf(path), 0600u);
    FileTokenStore otherProcess(path.string());
    EXPECT_EQ(otherProcess.Load(kService), kTokens);
    EXPECT_EQ(otherProcess.Load("http://b.test"), others);
    EXPECT_FALSE(otherProcess.Load("http://c.test"));
    otherProcess.Forget(kService);
    EXPECT_FALSE(store.Load(kService));
    EXPECT_EQ(store.Load("http://b.test"), others);
}

TEST_F(FileTokenStoreTest, ADamagedFileCountsAsEmptyAndIsReplaced) {
    for (char const* text :
         {"", "{", "[]", "null", "\xFF", R"({"services":[]})",
          R"({"services":{"http://a.test":1}})",
          R"({"services":{"http://a.test":{"access_token":"x","refresh_token":5,"expires_at":1}}})",
          R"({"services":{"http://a.test":{"access_token":"x"}}})",
          R"({"services":{"http://a.test":{"access_token":"fifteen-letters",)"
          R"("refresh_token":"refresh-of-a-test","expires_at":1}}})"}) {
        SCOPED_TRACE(text);
        directory.Write("tokens.json", text);
        EXPECT_FALSE(store.Load(kService));
        store.Save(kService, kTokens);
        EXPECT_EQ(store.Load(kService), kTokens);
    }
}

TEST_F(FileTokenStoreTest, ATimeBeyondTheClockIsItsEnd) {
    using moxcore::threads::TimePoint;
    std::pair<char const*, TimePoint> const rows[] = {
        {"9223372036854775807", TimePoint::max()},
        {"18446744073709551615", TimePoint::max()},
        {"-9223372036854775808", TimePoint::min()},
        {"1e300", TimePoint()},
    };
    for (auto const& [text, time] : rows) {
        directory.Write("tokens.json",
                        R"({"services":{"http://a.test":{"access_token":"access-of-a-test",)"
                        R"("refresh_token":"refresh-of-a-test","expires_at":)" +
                            std::string(text) + "}}}");
        ASSERT_TRUE(store.Load(kService)) << text;
        EXPECT_EQ(store.Load(kService)->expiry, time) << text;
    }
}

TEST_F(FileTokenStoreTest, AFileThatOthersMayReadIsClosedToThem) {
    store.Save(kService, kTokens);
    chmod(path.c_str(), 0644);
    directory.Write("tokens.json.new", "left by a process that was killed");
    chmod((path.string() + ".new").c_str(), 0666);
    EXPECT_EQ(store.Load(kService), kTokens);
    EXPECT_EQ(ModeOf(path), 0600u);
    store.Save(kService, kTokens);
    EXPECT_EQ(ModeOf(path), 0600u);
}

TEST_F(FileTokenStoreTest, ASignOutThatIsMarkedIsOneUntilTheNextSignIn) {
    store.Save(kService, kTokens);
    store.MarkSignedOut(kService);
    EXPECT_FALSE(store.Load(kService));
    EXPECT_TRUE(store.IsMarkedSignedOut(kService));
    EXPECT_FALSE(store.IsMarkedSignedOut("http://b.test"));
    store.Save(kService, kTokens);
    EXPECT_FALSE(store.IsMarkedSignedOut(kService));
    store.ForgetIfStill(kService, {"access", "another", kTokens.expiry});
    EXPECT_EQ(store.Load(kService), kTokens);
    store.ForgetIfStill(kService, kTokens);
    EXPECT_FALSE(store.Load(kService));
}

}  // namespace
