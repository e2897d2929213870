// Uploads of files that are large enough to go in ranges.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include "moxcore/config/Error.h"
#include "tests/platform/quilloservices/UploadFixture.h"

namespace {

using namespace quillosdk;
using namespace std::chrono_literals;
using moxcore::config::ExtractMessageFromException;
using moxcore::config::ExtractResultFromException;
using testsupport::FakeTus;
using testsupport::HeaderOf;
using testsupport::kPiece;
using testsupport::Movie;
using testsupport::Weather;

class RangedUploadTest : public testsupport::UploadFixture {
protected:
    std::size_t CountOf(std::string const& method) const {
        std::size_t count = 0;
        for (std::size_t i = 0; i < transport.Count(); ++i)
            count += transport.At(i).method == method ? 1 : 0;
        return count;
    }

    /// The numbers of the PATCH requests that have been sent.
    std::vector<std::size_t> Patches() const {
        std::vector<std::size_t> patches;
        for (std::size_t i = 0; i < transport.Count(); ++i)
            if (transport.At(i).method == "PATCH") patches.push_back(i);
        return patches;
    }

    std::string const movie = Movie(3 * kPiece + 5);
    std::filesystem::path const path = directory.Write("m", movie);
};

TEST_F(RangedUploadTest, JoinsTheRangesInOneMovie) {
    quillocommon::Guid const stack{std::string_view("99999999-2222-3333-4444-555555555555")};
    std::set<std::string> places;
    std::string concat;
    tus.onRequest = [&](HttpRequest const& request) {
        EXPECT_LE(BodySize(request), kPiece);
        auto const metadata = HeaderOf(request, "Upload-Metadata");
        if (HeaderOf(request, "Upload-Concat") == "partial")
            places.insert(metadata.substr(metadata.find("whole_offset")));
        else if (request.method == "POST")
            concat = HeaderOf(request, "Upload-Concat");
    };
    auto const future = Upload(path, stack);
    ASSERT_FALSE(future.GetException()) << ExtractMessageFromException(future.GetException());
    EXPECT_EQ(future.Get()->GetAssetObject().name, "m");
    ASSERT_EQ(tus.uploads.size(), 1u) << "the parts are gone";
    EXPECT_EQ(tus.uploads.begin()->second.bytes, movie);
    EXPECT_EQ(tus.uploads.begin()->second.metadata,
              "filename bQ==,folder_id MTExMTExMTEtMjIyMi0zMzMzLTQ0NDQtNTU1NTU1NTU1NTU1,"
              "version_stack_id OTk5OTk5OTktMjIyMi0zMzMzLTQ0NDQtNTU1NTU1NTU1NTU1");
    EXPECT_THAT(places,
                testing::ElementsAre("whole_offset MA==,whole_length MjUxNjU4Mjk=",
                                     "whole_offset MTY3NzcyMTY=,whole_length MjUxNjU4Mjk=",
                                     "whole_offset MjUxNjU4MjQ=,whole_length MjUxNjU4Mjk=",
                                     "whole_offset ODM4ODYwOA==,whole_length MjUxNjU4Mjk="));
    EXPECT_EQ(std::count(concat.begin(), concat.end(), ' '), 3);
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_EQ(progress.back(), std::make_pair(movie.size() * std::uint64_t{1}, movie.size()));
    EXPECT_EQ(CountOf("OPTIONS"), 1u);
    EXPECT_TRUE(Upload(path).Get()->IsSuccessful());
    EXPECT_EQ(CountOf("OPTIONS"), 1u) << "what the service offers is known by then";
}

TEST_F(RangedUploadTest, BeginsAPieceOnceTheOthersOnlyWaitForAnswers) {
    transport.SetResponder([&](HttpRequest const& request) {
        return request.method == "PATCH" ? std::nullopt : tus.Answer(request);
    });
    auto const future = Begin(path);
    executor.RunDue();
    for (std::size_t busy = 1; busy <= 4; ++busy) {
        auto const patches = Patches();
        ASSERT_EQ(patches.size(), busy);
        auto const size = BodySize(transport.At(patches.back()));
        if (size > kPiece / 2) transport.ReportSent(patches.back(), size - 1);
        executor.RunDue();
        EXPECT_EQ(Patches().size(), busy) << "the line is busy";
        transport.ReportSent(patches.back(), size);
        executor.RunDue();
    }
    EXPECT_FALSE(future.IsComplete());
    for (std::size_t const patch : Patches()) {
        auto const answer = tus.Answer(transport.At(patch));
        transport.Answer(patch, answer->status, answer->body, answer->headers);
    }
    executor.RunDue();
    EXPECT_TRUE(future.IsComplete() && future.Get()->IsSuccessful());
}

TEST_F(RangedUploadTest, APieceWithoutAConnectionHoldsNoOtherUp) {
    transport.SetResponder([&](HttpRequest const& request) {
        return request.method == "PATCH" ? std::nullopt : tus.Answer(request);
    });
    auto const future = Begin(path);
    executor.AdvanceBy(10ms);
    ASSERT_EQ(Patches().size(), 1u);
    executor.AdvanceBy(10ms);
    ASSERT_EQ(Patches().size(), 2u);
    transport.ReportSent(Patches().back(), 1);
    executor.AdvanceBy(1h);
    EXPECT_EQ(Patches().size(), 2u) << "slow is not idle";
}

TEST_F(RangedUploadTest, PatienceBeginsWithTheFailure) {
    transport.SetResponder([&](HttpRequest const& request) {
        return request.method == "PATCH" ? std::nullopt : tus.Answer(request);
    });
    auto const future = Begin(path);
    executor.AdvanceBy(2h);  // a slow line, or a range whose turn does not come
    transport.SetResponder([&](HttpRequest const& request) { return tus.Answer(request); });
    for (std::size_t const patch : Patches())
        transport.Fail(patch, kConnectionLost);
    tus.events = {4, {"PATCH", Weather::LoseRequest}};
    executor.AdvanceBy(1h);
    EXPECT_TRUE(future.IsComplete() && !future.GetException());
}

TEST_F(RangedUploadTest, WeathersWhatItCan) {
    struct Row {
        char const* name;
        std::deque<FakeTus::Event> events;
        std::size_t parts = 4;   // that are created
        std::size_t resent = 1;  // pieces that are sent more than once
    };
    using enum Weather;
    Row const rows[] = {
        {"a creation's answer is lost", {{"POST", LoseAnswer}}, 4, 0},
        {"the offer is asked for in vain", {{"OPTIONS", LoseRequest}, {"OPTIONS", {}, 503}}, 4, 0},
        {"a piece is lost", {{"PATCH", LoseRequest}}},
        {"half a piece is kept", {{"PATCH", KeepHalf}}},
        {"a piece's answer is lost", {{"PATCH", LoseAnswer}}, 4, 0},
        {"a piece is damaged", {{"PATCH", {}, 460}}},
        {"all pieces are lost", {4, {"PATCH", LoseRequest}}, 4, 4},
        {"a part is lost", {{"PATCH", LoseUpload}}, 5},
        {"a part is lost twice",
         {{"PATCH", LoseUpload}, {"PATCH", LoseRequest}, {"HEAD", LoseUpload}},
         6,
         2},
        {"the joining is lost", {{"JOIN", LoseRequest}}, 4, 0},
        {"the joining's answer is lost", {{"JOIN", LoseAnswer}, {"JOIN", {}, 503}}, 4, 0},
        {"bytes are missing at the joining", {{"JOIN", {}, 409}, {"HEAD", LoseHalf}}},
        {"a part is missing at the joining", {{"JOIN", LoseUpload}}, 8, 4},
        {"the movie is damaged once", {{"JOIN", {}, 460}}, 8, 4},
        {"the asset is slow to come", {{"GET", {}, 503}}, 4, 0},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        SetWeather(row.events);
        std::set<std::string> keys;
        std::size_t pieces = 0;
        tus.onRequest = [&](HttpRequest const& request) {
            if (HeaderOf(request, "Upload-Concat") == "partial")
                keys.insert(HeaderOf(request, "Idempotency-Key"));
            if (request.method == "PATCH") ++pieces;
        };
        MakeClient();
        auto const future = Upload(path);
        ASSERT_FALSE(future.GetException()) << ExtractMessageFromException(future.GetException());
        EXPECT_TRUE(future.Get()->IsSuccessful());
        EXPECT_EQ(keys.size(), row.parts);
        EXPECT_EQ(pieces, 4 + row.resent);
        auto const stored = std::find_if(tus.uploads.begin(), tus.uploads.end(),
                                         [](auto const& entry) { return !entry.second.isPart; });
        ASSERT_NE(stored, tus.uploads.end());
        EXPECT_EQ(stored->second.bytes, movie);
        EXPECT_EQ(progress.back(), std::make_pair(movie.size() * std::uint64_t{1}, movie.size()));
        EXPECT_TRUE(row.parts == 8 || std::is_sorted(progress.begin(), progress.end()));
        EXPECT_TRUE(waits.empty() || !waits.back()) << "it went on";
        EXPECT_TRUE(failures.All().empty());
    }
}

TEST_F(RangedUploadTest, EndsWithItsPartsWhereItMust) {
    struct Row {
        char const* name;
        std::deque<FakeTus::Event> events;
        std::int32_t result;  // 0: a response with the status below
        int status;
        std::size_t left;  // uploads at the service
    };
    using enum Weather;
    Row const rows[] = {
        {"no longer allowed", {{"PATCH", {}, 403}}, 0, 403, 0},
        {"the joining is refused", {{"JOIN", {}, 403}}, 0, 403, 0},
        {"the disk is full", {{"PATCH", {}, 507}}, 0, 507, 0},
        {"no such folder", {4, {"POST", {}, 404}}, 0, 404, 0},
        {"always cut", {100, {"PATCH", LoseRequest}}, kConnectionLost, 0, 4},
        {"published, or not", {{"JOIN", LoseRequest}, {"JOIN", LoseUpload}}, kUploadLost, 0, 0},
        {"damaged each time", {3, {"JOIN", {}, 460}}, kContentMismatch, 0, 8},
        {"stored wrongly", {{"JOIN", CorruptContent}}, kContentMismatch, 0, 1},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        SetWeather(row.events);
        auto const future = Upload(path);
        EXPECT_EQ(ExtractResultFromException(future.GetException()), row.result);
        if (row.result == 0) {
            EXPECT_EQ(future.Get()->GetHTTPStatusCode(), row.status);
        }
        EXPECT_EQ(tus.uploads.size(), row.left);
    }
    tus = FakeTus();
    tus.onRequest = [&](HttpRequest const& request) {
        if (request.method == "PATCH") std::ofstream(path, std::ios::app) << "more";
    };
    EXPECT_EQ(ExtractResultFromException(Upload(path).GetException()), kFileChanged);
    EXPECT_TRUE(tus.uploads.empty());
}

TEST_F(RangedUploadTest, GoesInOneStreamWhereTheServiceJoinsNothing) {
    struct Row {
        char const* name;
        char const* extensions;
        std::deque<FakeTus::Event> events;
        std::size_t left;
    };
    for (Row const& row : std::vector<Row>{
             {"and says so", "creation,checksum,termination", {4, {"POST", {}, 501}}, 1},
             {"and takes parts for movies", "creation, termination", {}, 1},
             {"and deletes nothing", "creation", {}, 5},
         }) {
        SCOPED_TRACE(row.name);
        tus = FakeTus();
        tus.extensions = row.extensions;
        tus.events = row.events;
        MakeClient();
        auto const future = Upload(path);
        ASSERT_FALSE(future.GetException()) << ExtractMessageFromException(future.GetException());
        EXPECT_TRUE(future.Get()->IsSuccessful());
        EXPECT_EQ(tus.uploads.size(), row.left);
        EXPECT_EQ(std::count_if(tus.uploads.begin(), tus.uploads.end(),
                                [&](auto const& entry) { return entry.second.bytes == movie; }),
                  1);
    }
}

}  // namespace
