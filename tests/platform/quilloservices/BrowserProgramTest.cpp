#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <future>

#include "quilloauth/Browser.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

class BrowserProgramTest : public testing::Test {
protected:
    std::string Script(std::string const& text) {
        auto const path = directory.Write("browser", "#!/bin/sh\n" + text + "\n");
        chmod(path.c_str(), 0700);
        return path.string();
    }

    /// Why the program has failed to show a page, once it has.
    static std::string FailureOf(std::string const& program) {
        auto const why = std::make_shared<std::promise<std::string>>();
        quilloauth::OpenWithProgram(program, "http://service.test/",
                                    [why](std::string const& text) { why->set_value(text); });
        return why->get_future().get();
    }

    testsupport::TemporaryDirectory directory;
};

TEST_F(BrowserProgramTest, GetsTheAddressAsItIsAndNothingElse) {
    auto const seen = directory.Path() / "seen";
    ASSERT_EQ(mkfifo(seen.c_str(), 0600), 0);
    std::string const url = "http://service.test/?a=$(id)&b=`id`;c='\"* d";
    quilloauth::OpenWithProgram(Script("exec > " + seen.string() + "\necho \"$#\"; echo \"$1\""),
                                url, [](std::string const& why) { ADD_FAILURE() << why; });
    std::ifstream file(seen);
    std::string count, address;
    std::getline(file, count);
    std::getline(file, address);
    EXPECT_EQ(count, "1");
    EXPECT_EQ(address, url);
}

TEST_F(BrowserProgramTest, TellsWhyItHasFailed) {
    EXPECT_EQ(
        FailureOf((directory.Path() / "none").string()),
        "cannot run " + (directory.Path() / "none").string() + " (No such file or directory)");
    EXPECT_EQ(FailureOf("no-such-browser"),
              "cannot run no-such-browser (No such file or directory)");
    auto const three = Script("exit 3");
    EXPECT_EQ(FailureOf(three), three + " ended with exit status 3");
    auto const killed = Script("kill -9 $$");
    EXPECT_EQ(FailureOf(killed), killed + " was ended by signal 9");
}

}  // namespace
