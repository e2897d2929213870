#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "moxcore/config/Error.h"
#include "tests/platform/quilloservices/UploadFixture.h"

namespace {

using namespace quillosdk;
using namespace std::chrono_literals;
using moxcore::config::ExtractResultFromException;
using testing::HasSubstr;
using testsupport::FakeTus;
using testsupport::HeaderOf;
using testsupport::kPiece;
using testsupport::Movie;
using testsupport::Weather;

using UploadTest = testsupport::UploadFixture;

TEST_F(UploadTest, SendsAFileInPiecesUnderTheKeyThatItTells) {
    auto const movie = Movie(2 * kPiece + 5);
    quillocommon::Guid const stack{std::string_view("99999999-2222-3333-4444-555555555555")};
    auto const future = Upload(directory.Write("A \xC3\xA9.mp4", movie), stack);

    ASSERT_FALSE(future.GetException());
    EXPECT_EQ(future.Get()->GetAssetObject().name, "m");
    ASSERT_EQ(tus.uploads.size(), 1u);
    auto const& upload = tus.uploads.begin()->second;
    EXPECT_EQ(upload.bytes, movie);
    EXPECT_EQ(upload.key, uploadID.AsString());
    EXPECT_EQ(upload.metadata,
              "filename QSDDqS5tcDQ=,folder_id MTExMTExMTEtMjIyMi0zMzMzLTQ0NDQtNTU1NTU1NTU1NTU1,"
              "version_stack_id OTk5OTk5OTktMjIyMi0zMzMzLTQ0NDQtNTU1NTU1NTU1NTU1");
    EXPECT_EQ(transport.Count(), 1u + 3u + 1u) << "a creation, three pieces, and the asset";
    EXPECT_TRUE(failures.All().empty());
}

TEST_F(UploadTest, AsksForNoAssetThatTheLastAnswerDescribes) {
    tus.namesAsset = true;
    auto const future = Upload(directory.Write("m", Movie(kPiece + 5)));
    EXPECT_EQ(future.Get()->GetAssetObject().name, "m");
    EXPECT_EQ(transport.Count(), 1u + 2u) << "a creation and two pieces";
    tus.events = {{"PATCH", Weather::CorruptContent}};
    EXPECT_EQ(ExtractResultFromException(Upload(directory.Write("n", "x")).GetException()),
              kContentMismatch);
}

TEST_F(UploadTest, JoinsNoStackWhenThereIsNone) {
    static_cast<void>(Upload(directory.Write("m", "x")));
    EXPECT_THAT(tus.uploads.begin()->second.metadata, testing::Not(HasSubstr("stack")));
}

TEST_F(UploadTest, ProgressCountsWhatIsOnItsWayAndEndsOnceTheFileIsPublished) {
    auto const path = directory.Write("m", Movie(kPiece + 100));
    transport.SetResponder({});
    UploadRequest const request(folderID, path.string(), [this](std::uint64_t d, std::uint64_t t) {
        progress.emplace_back(d, t);
    });
    auto const future = client->GetTransferManager().Upload(request, uploadID);
    EXPECT_EQ(transport.Count(), 0u) << "nothing happens on the caller's thread";
    executor.RunDue();
    auto const answer = [&](std::size_t i) {
        auto const response = tus.Answer(transport.At(i));
        transport.Answer(i, response->status, response->body, response->headers);
        executor.RunDue();
    };
    answer(0);
    // The first is too little to be worth telling, the third was sent again: no step back.
    for (std::uint64_t const sent : {10, 100'000, 50'000, 200'000}) {
        transport.ReportSent(1, sent);
        executor.AdvanceBy(10ms);
    }
    answer(1);
    transport.ReportSent(2, 100);
    answer(2);
    EXPECT_FALSE(future.IsComplete());
    answer(3);
    ASSERT_TRUE(future.IsComplete());
    std::uint64_t const all = kPiece + 100;
    EXPECT_EQ(progress,
              (decltype(progress){{100'000, all}, {200'000, all}, {kPiece, all}, {all, all}}));
}

/// An upload of a piece and a bit in all weathers: it ends well, the service has the file once
/// and whole, and the progress never turns back unless the upload began anew.
TEST_F(UploadTest, WeathersWhatItCan) {
    struct Row {
        char const* name;
        std::deque<FakeTus::Event> events;
        std::size_t creations = 1;  // of different uploads
        std::size_t waits = 0;      // that are reported
    };
    using enum Weather;
    Row const rows[] = {
        {"a creation is lost", {{"POST", LoseRequest}}},
        {"a creation's answer is lost", {{"POST", LoseAnswer}, {"POST", LoseAnswer}}, 1, 1},
        {"too many creations", {{"POST", {}, 429, {{"RETRY-AFTER", "100"}}}}, 1, 1},
        {"a piece is lost", {{"PATCH", LoseRequest}}},
        {"cut in mid-piece, nothing kept", {{"PATCH", LoseRequest}, {"PATCH", LoseRequest}}, 1, 1},
        {"cut in mid-piece, half kept", {{"PATCH", KeepHalf}}},
        {"cut again and again", {{"PATCH", KeepHalf}, {"PATCH", KeepHalf}, {"PATCH", KeepHalf}}},
        {"half kept politely", {{"PATCH", KeepHalfPolitely}, {"PATCH", KeepHalfPolitely}}},
        {"a piece's answer is lost", {{"PATCH", LoseAnswer}}},
        {"the last answer is lost", {{"PATCH", LoseAnswer}, {"PATCH", LoseAnswer}}},
        {"restarted with less", {{"PATCH", LoseAnswer}, {"PATCH", LoseHalf}}},
        {"restarted with less at the end", {{"HEAD", LoseHalf}, {"PATCH", LoseAnswer}}, 1, 1},
        {"an offset that is not current", {{"PATCH", {}, 409}}},
        {"bytes changed on the way", {{"PATCH", {}, 460}, {"PATCH", {}, 460}}},
        {"down for a while",
         {{"PATCH", {}, 500}, {"HEAD", {}, 503}, {"HEAD", LoseRequest}, {"PATCH", {}, 502}},
         1,
         2},
        {"the answer tells no offset", {{"PATCH", {}, 204}}},
        {"the answer tells one beyond", {{"PATCH", {}, 204, {{"UPLOAD-OFFSET", "99999999"}}}}},
        {"the asset is slow to come",
         {{"GET", {}, 409}, {"GET", {}, 503}, {"GET", LoseAnswer}},
         1,
         1},
        {"the upload is lost", {{"PATCH", LoseUpload}}, 2},
        {"gone at a question", {{"PATCH", LoseRequest}, {"HEAD", LoseUpload}}, 2},
        {"lost twice", {{"PATCH", LoseUpload}, {"PATCH", LoseUpload}}, 3},
        {"stored wrongly once", {{"PATCH", CorruptContent}}},
    };
    auto const movie = Movie(kPiece + 5);
    auto const path = directory.Write("m", movie);
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        SetWeather(row.events);
        std::set<std::string> keys;
        tus.onRequest = [&](HttpRequest const& request) {
            if (request.method == "POST") keys.insert(HeaderOf(request, "Idempotency-Key"));
        };
        auto const future = Upload(path);
        ASSERT_FALSE(future.GetException())
            << moxcore::config::ExtractMessageFromException(future.GetException());
        EXPECT_TRUE(future.Get()->IsSuccessful());
        EXPECT_TRUE(tus.events.empty()) << "the weather did not come";
        EXPECT_EQ(waits.size(), 2 * row.waits);
        EXPECT_TRUE(waits.empty() || !waits.back()) << "it went on";
        EXPECT_EQ(keys.size(), row.creations);
        ASSERT_EQ(tus.uploads.size(), 1u);
        EXPECT_EQ(tus.uploads.begin()->second.bytes, movie);
        EXPECT_EQ(progress.back(), std::make_pair(movie.size() * std::uint64_t{1}, movie.size()));
        bool const beganAnew = row.creations > 1 || row.events[0].weather == CorruptContent;
        EXPECT_TRUE(beganAnew || std::is_sorted(progress.begin(), progress.end()));
        EXPECT_TRUE(failures.All().empty());
    }
}

/// Uploads of one piece that cannot end well: with what they fail, or the status they end with.
TEST_F(UploadTest, FailsWithAReasonWhereItMust) {
    struct Row {
        char const* name;
        std::deque<FakeTus::Event> events;
        std::int32_t result;  // 0: a response with the status below
        int status;
        char const* says;
    };
    using enum Weather;
    std::deque<FakeTus::Event> const alwaysLost(20, {"PATCH", LoseRequest});
    std::deque<FakeTus::Event> const alwaysDown(20, {"PATCH", {}, 500});
    Row const rows[] = {
        {"no such folder", {{"POST", {}, 404}}, 0, 404, "answered 404"},
        {"too large", {{"POST", {}, 413}}, 0, 413, "larger than the service takes"},
        {"signed out", {{"PATCH", {}, 401}}, 0, 401, "sign in again"},
        {"no longer allowed", {{"PATCH", {}, 403}}, 0, 403, "answered 403"},
        {"no asset", {{"GET", {}, 404}}, 0, 404, "answered 404"},
        {"always cut", alwaysLost, kConnectionLost, 0, "weather"},
        {"always down", alwaysDown, 0, 500, "try again later"},
        {"no Location", {{"POST", {}, 201}}, kMalformedAnswer, 0, "where the upload goes"},
        {"no asset in the answer", {{"GET", {}, 200}}, kMalformedAnswer, 0, "no such JSON"},
        {"an offset beyond all",
         {{"PATCH", LoseRequest}, {"HEAD", {}, 200, {{"UPLOAD-OFFSET", "500"}}}},
         kMalformedAnswer,
         0,
         "how far"},
        {"another length",
         {{"PATCH", LoseRequest},
          {"HEAD", {}, 200, {{"UPLOAD-OFFSET", "0"}, {"UPLOAD-LENGTH", "7"}}}},
         kMalformedAnswer,
         0,
         "how far"},
        {"a length beyond all numbers",
         {{"PATCH", LoseRequest},
          {"HEAD", {}, 200, {{"UPLOAD-OFFSET", "0"}, {"UPLOAD-LENGTH", "99999999999999999999"}}}},
         kMalformedAnswer,
         0,
         "how far"},
        {"never an offset", {20, {"PATCH", {}, 204}}, kMalformedAnswer, 0, "how far"},
        {"published, or not",
         {{"PATCH", LoseAnswer}, {"HEAD", LoseUpload}},
         kUploadLost,
         0,
         "look whether the movie is in its folder"},
        {"lost each time", {3, {"PATCH", LoseUpload}}, kUploadLost, 0, "each time"},
        {"stored wrongly", {{"PATCH", CorruptContent}}, kContentMismatch, 0, "something else"},
        {"refused for its checksum each time",
         {3, {"PATCH", {}, 460}},
         kContentMismatch,
         0,
         "not what is sent"},
    };
    auto const path = directory.Write("m", Movie(100));
    std::size_t told = 0;
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        SetWeather(row.events);
        auto const future = Upload(path);
        EXPECT_EQ(ExtractResultFromException(future.GetException()), row.result);
        if (row.result == 0) {
            EXPECT_EQ(future.Get()->GetHTTPStatusCode(), row.status);
            EXPECT_FALSE(future.Get()->GetAssetObject().id);
        }
        EXPECT_TRUE(tus.events.empty()) << "given up too early";
        EXPECT_THAT(progress, testing::Not(testing::Contains(std::make_pair(100ul, 100ul))));
        ASSERT_EQ(failures.All().size(), ++told);
        auto const failure = failures.All().back();
        EXPECT_EQ(failure.step, quillocommon::Step::Upload);
        EXPECT_EQ(failure.result, row.result == 0 ? kRefused : row.result);
        EXPECT_EQ(failure.message, row.result == 0 ? future.Get()->GetRefusal()
                                                   : moxcore::config::ExtractMessageFromException(
                                                         future.GetException()));
        EXPECT_THAT(failure.message,
                    testing::AllOf(HasSubstr("Could not upload m: "), HasSubstr(row.says),
                                   testing::Not(HasSubstr("secret"))));
    }
}

TEST_F(UploadTest, FollowsALocationAtTheServiceAndNowhereElse) {
    struct Row {
        char const* location;
        char const* path;  // null: not followed
    };
    constexpr Row kRows[] = {
        {"/v1/uploads/u1", "/v1/uploads/u1"},
        {"uploads/u1", "/v1/uploads/u1"},
        {"https://service.test/v1/uploads/u1", "/v1/uploads/u1"},
        {"https://SERVICE.test:443/v1/uploads/u1", "/v1/uploads/u1"},
        {"https://service.test:81/v1/uploads/u1", nullptr},
        {"http://service.test/v1/uploads/u1", nullptr},
        {"https://evil.test/v1/uploads/u1", nullptr},
        {"//evil.test/v1/uploads/u1", nullptr},
        {"https://service.test@evil.test/v1/uploads/u1", nullptr},
        {"https://a:b@service.test/v1/uploads/u1", nullptr},
        {"file:///v1/uploads/u1", nullptr},
    };
    auto const path = directory.Write("m", "x");
    for (auto const& row : kRows) {
        SCOPED_TRACE(row.location);
        tus = FakeTus();
        tus.location = row.location;
        auto const before = transport.Count();
        auto const future = Upload(path);
        if (row.path) {
            EXPECT_FALSE(future.GetException());
            EXPECT_EQ(transport.LineAt(before + 1), std::string("PATCH ") + row.path);
        } else {
            EXPECT_EQ(ExtractResultFromException(future.GetException()), kMalformedAnswer);
            EXPECT_EQ(transport.Count(), before + 1) << "the token went elsewhere";
        }
    }
}

TEST_F(UploadTest, RefusesWhatIsNoFileToUpload) {
    auto const& root = directory.Path();
    std::filesystem::create_directory(root / "directory");
    mkfifo((root / "pipe").c_str(), 0600);
    directory.Write("empty", "");
    struct Row {
        char const* name;
        char const* says;
    };
    for (auto const& row :
         {Row{"missing", "cannot be opened: No such file"}, Row{"directory", "no regular file"},
          Row{"pipe", "no regular file"}, Row{"empty", "is empty"}}) {
        auto const future = Upload(root / row.name);
        EXPECT_EQ(ExtractResultFromException(future.GetException()), kFileUnreadable) << row.name;
        EXPECT_THAT(failures.All().back().message, HasSubstr(row.says));
    }
    EXPECT_EQ(failures.All().size(), 4u);
    EXPECT_EQ(transport.Count(), 0u);
}

TEST_F(UploadTest, FailsWhenTheFileChangesWhileItIsReadAndPublishesNothing) {
    auto const movie = Movie(2 * kPiece + 5);
    auto const path = directory.Path() / "m";
    struct Row {
        char const* name;
        std::function<void()> change;
    };
    Row const rows[] = {
        {"grows", [&] { std::ofstream(path, std::ios::app) << "more"; }},
        {"shrinks", [&] { std::filesystem::resize_file(path, kPiece + 1); }},
        {"is written to",
         [&] {
             std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) + 1s);
         }},
        {"is replaced",
         [&] {
             auto const times = std::filesystem::last_write_time(path);
             auto const other = directory.Write("other", movie);
             std::filesystem::last_write_time(other, times);
             std::filesystem::rename(other, path);
         }},
        {"is removed", [&] { std::filesystem::remove(path); }},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        directory.Write("m", movie);
        tus = FakeTus();
        bool changed = false;
        tus.onRequest = [&](HttpRequest const& request) {
            if (request.method == "PATCH" && !std::exchange(changed, true)) row.change();
        };
        auto const future = Upload(path);
        EXPECT_EQ(ExtractResultFromException(future.GetException()), kFileChanged);
        EXPECT_LT(tus.uploads.begin()->second.bytes.size(), movie.size());
        EXPECT_THAT(failures.All().back().message, HasSubstr("has changed during the upload"));
    }
}

TEST_F(UploadTest, AThrowingProgressFailsTheUpload) {
    UploadRequest const request(
        folderID, directory.Write("m", Movie(2 * kPiece)).string(),
        [](std::uint64_t, std::uint64_t) { throw std::bad_function_call(); });
    auto const future = client->GetTransferManager().Upload(request, uploadID);
    executor.RunDue();
    EXPECT_THROW(static_cast<void>(future.Get()), std::bad_function_call);
}

TEST_F(UploadTest, IsCancelledWhenTheTransportEnds) {
    transport.SetResponder({});
    UploadRequest const request(folderID, directory.Write("m", "x").string(), {});
    auto const future = client->GetTransferManager().Upload(request, uploadID);
    executor.RunDue();
    transport.Cancel(0);
    executor.RunDue();
    EXPECT_THROW(static_cast<void>(future.Get()), moxcore::async::CancelledException);
    EXPECT_TRUE(failures.All().empty());
}

}  // namespace
