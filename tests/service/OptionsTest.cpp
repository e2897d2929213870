#include "service/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quilloservice {
namespace {

using testing::HasSubstr;

TEST(Options, ParsesEveryOption) {
    Options options = ParseOptions({"--data",
                                    "d",
                                    "--port",
                                    "8080",
                                    "--host",
                                    "0.0.0.0",
                                    "--sample",
                                    "large",
                                    "--trust-local-user",
                                    "--limit",
                                    "5/60",
                                    "--latency",
                                    "20",
                                    "--fail",
                                    "0.25",
                                    "--drop-upload-after",
                                    "1000",
                                    "--stop-with-stdin",
                                    "--allow-origin",
                                    "https://review.example:8"});
    EXPECT_EQ(options.dataDirectory, "d");
    EXPECT_EQ(options.port, 8080);
    EXPECT_EQ(options.host, "0.0.0.0");
    EXPECT_EQ(options.sample, SampleSize::Large);
    EXPECT_TRUE(options.trustLocalUser && options.stopWithStdin && !options.help);
    EXPECT_EQ(options.allowOrigin, "https://review.example:8");
    EXPECT_EQ(options.limit->requests, 5u);
    EXPECT_EQ(options.limit->window, std::chrono::minutes(1));
    EXPECT_EQ(options.faults.latency, std::chrono::milliseconds(20));
    EXPECT_EQ(options.faults.failRate, 0.25);
    EXPECT_EQ(options.faults.dropUploadAfterBytes, 1000);
}

TEST(Options, TakesTheDatabaseFromTheEnvironmentUnlessOneIsGiven) {
    char const* const fromEnvironment = "postgresql://me@one/review";
    std::vector<std::string> const data{"--data", "d"};
    EXPECT_EQ(ParseOptions(data).database, "");
    EXPECT_EQ(ParseOptions(data, "").database, "");
    EXPECT_EQ(ParseOptions(data, fromEnvironment).database, fromEnvironment);
    for (auto [given, used] :
         {std::pair("postgres://me@two/review", "postgres://me@two/review"), {"none", ""}}) {
        EXPECT_EQ(ParseOptions({"--data", "d", "--database", given}, fromEnvironment).database,
                  used);
    }
}

TEST(Options, ReportsInvalidArguments) {
    struct Row {
        std::vector<std::string> arguments;
        char const* message;
    };
    for (Row const& row : std::vector<Row>{
             {{}, "--data DIR is missing"},
             {{"--data"}, "--data needs a value"},
             {{"migrate", "--data", "d"}, "name it with --database URL"},
             {{"--data", "d", "--database", "mysql://me:secret@x"},
              "(or QUILLO_DATABASE) takes an"},
             {{"--data", "d", "--database=postgresql://me:secret@x"}, "argument \"--database\";"},
             {{"--dta", "d"}, "unknown argument \"--dta\""},
             {{"--data", "d", "--port", "x"}, "--port takes a whole number from 0 to 65535"},
             {{"--data", "d", "--port", "65536"}, "--port takes"},
             {{"--data", "d", "--sample", "huge"}, "--sample takes small, large or none"},
             {{"--data", "d", "--limit", "60"}, "--limit takes N/SECONDS"},
             {{"--data", "d", "--limit", "0/60"}, "from 1 to"},
             {{"--data", "d", "--limit", "5/0"}, "from 1 to"},
             {{"--data", "d", "--fail", "1.5"}, "--fail takes a number from 0 to 1"},
             {{"--data", "d", "--fail", "nan"}, "--fail takes"},
             {{"--data", "d", "--allow-origin", "*"}, "--allow-origin takes an origin"},
             {{"--data", "d", "--allow-origin", "https://a/b"}, "--allow-origin takes an origin"},
             {{"--data", "d", "--latency", "-1"}, "--latency takes"},
             {{"--data", "d", "--drop-upload-after", "0"}, "--drop-upload-after takes"},
         }) {
        try {
            ParseOptions(row.arguments);
            ADD_FAILURE() << "accepted, expected: " << row.message;
        } catch (UsageError const& error) {
            EXPECT_THAT(error.what(), HasSubstr(row.message));
        }
    }
}

}  // namespace
}  // namespace quilloservice
