#include "host/session/Options.h"

#include <gmock/gmock.h>

#include "quillohostkit/process/Failure.h"

namespace quillohost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Arguments = std::vector<std::string>;

TEST(Options, TakesTheWholeCommandLineOfAShare) {
    auto const options =
        ParseOptions({"share", "--name=a=b", "--to", R"(Acme/Films\/Ads/Spring)", "--json",
                      "--service", "http://127.0.0.1:1", "--data", "/tmp/state", "--browser",
                      "firefox", "--insecure-http", "--", "--movie.mp4"});

    EXPECT_EQ(options.command, Command::Share);
    EXPECT_EQ(options.name, "a=b");
    EXPECT_THAT(options.to, ElementsAre("Acme", "Films/Ads", "Spring"));
    EXPECT_TRUE(options.json);
    EXPECT_TRUE(options.insecureHttp);
    EXPECT_EQ(options.service, "http://127.0.0.1:1");
    EXPECT_EQ(options.data, "/tmp/state");
    EXPECT_EQ(options.browser, "firefox");
    EXPECT_EQ(options.movie, "--movie.mp4");
}

TEST(Options, MakesTheDataDirectoryAbsolute) {
    auto const options = ParseOptions(
        {"locations", "--data", "state", "--depth", "2", "--watch", "--backend", "client"});
    EXPECT_EQ(options.backend, Backend::Client);
    EXPECT_EQ(options.data, std::filesystem::current_path() / "state");
    EXPECT_EQ(options.depth, 2);
}

TEST(Options, OpensTheWindowWithoutACommand) {
    EXPECT_EQ(ParseOptions({}).command, Command::Editor);
    auto const options = ParseOptions({"--data", "/tmp/state", "--watchdog=times", "/"});
    EXPECT_EQ(options.command, Command::Editor);
    EXPECT_EQ(options.movie, "/");
    EXPECT_EQ(options.watchdog, std::filesystem::current_path() / "times");
}

TEST(Options, HelpWinsOverWhateverElseIsSaid) {
    EXPECT_EQ(ParseOptions({"share", "--nonsense", "--help"}).command, Command::Help);
}

TEST(Options, RefusesWhatItDoesNotUnderstandAndSaysWhy) {
    struct Row {
        Arguments arguments;
        char const* reason;
    };
    Row const rows[] = {
        {{"publish"}, "no command and no movie \"publish\""},
        {{"/", "b.mp4"}, "the window takes one movie"},
        {{"--name", "x"}, "--name is no option of the window"},
        {{"--events="}, "--events is empty"},
        {{"share"}, "needs the name of a movie"},
        {{"share", ""}, "name is empty"},
        {{"share", "a.mp4", "b.mp4"}, "\"b.mp4\" is a second one"},
        {{"share", "a.mp4", "--nmae", "x"}, "no option --nmae"},
        {{"share", "a.mp4", "--name"}, "--name needs a value"},
        {{"share", "a.mp4", "--name", " \t"}, "--name is empty"},
        {{"share", "a.mp4", "--json=yes"}, "--json takes no value"},
        {{"share", "a.mp4", "--depth", "2"}, "--depth is no option of share"},
        {{"share", "a.mp4", "--to", "A//B"}, "has an empty name"},
        {{"locations", "a.mp4"}, "locations takes no \"a.mp4\""},
        {{"locations", "--to", "A"}, "--to is no option of locations"},
        {{"locations", "--depth", "0"}, "whole number from 1, not \"0\""},
        {{"locations", "--depth", "2x"}, "not \"2x\""},
        {{"locations", "--depth", "99999999999"}, "not \"99999999999\""},
        {{"choose-location", "--to", "A"}, "--to is no option of choose-location"},
        {{"choose-location", "a.mp4"}, "choose-location takes no \"a.mp4\""},
        {{"sign-in", "--json"}, "--json is no option of sign-in"},
        {{"share", "a.mp4", "--backend", "SDK"}, "sdk or client, not \"SDK\""},
        {{"locations", "--watch"}, "--watch needs --backend client"},
        {{"locations", "--backend=sdk", "--watch"}, "--watch needs --backend client"},
        {{"trace", "--data="}, "--data is empty"},
        {{"sign-in", "--browser="}, "--browser is empty"},
        {{"sign-out", "--browser", "x"}, "--browser is no option of sign-out"},
    };
    for (auto const& row : rows) {
        try {
            static_cast<void>(ParseOptions(row.arguments));
            ADD_FAILURE() << "accepted: " << testing::PrintToString(row.arguments);
        } catch (quillohostkit::Failure const& failure) {
            EXPECT_EQ(failure.GetKind(), quillohostkit::FailureKind::Usage);
            EXPECT_THAT(failure.what(), HasSubstr(row.reason));
        }
    }
}

}  // namespace
}  // namespace quillohost
