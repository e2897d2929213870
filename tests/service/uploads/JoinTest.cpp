// Movies made of parts.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <iterator>

#include "service/base/ApiError.h"
#include "service/base/File.h"
#include "service/base/Text.h"
#include "service/base/Uuid.h"
#include "service/uploads/Uploads.h"
#include "tests/service/uploads/UploadsFixture.h"

namespace quilloservice {
namespace {

namespace fs = std::filesystem;

/// The status of the ApiError that `call` throws; 0 if it throws none.
int RefusalOf(std::function<void()> const& call) {
    try {
        call();
        return 0;
    } catch (ApiError const& error) {
        return error.status;
    }
}

class JoinTest : public UploadsFixture {
protected:
    struct Stretch {
        std::int64_t offset;
        std::int64_t length;
    };

    UploadId CreatePart(Stretch const& stretch, std::optional<WholeId> const& ofWhole,
                        std::int64_t wholeLength) {
        NewUpload part{.mediaType = "video/mp4",
                       .length = stretch.length,
                       .isPart = true,
                       .namesFolder = false};
        if (ofWhole) part.place = {*ofWhole, stretch.offset, wholeLength};
        return uploads->Create(user, part, std::nullopt);
    }

    UploadId CreatePart(Stretch const& stretch) {
        return CreatePart(stretch, whole, static_cast<std::int64_t>(content.size()));
    }

    std::int64_t Append(UploadId const& id, std::int64_t offset, std::string const& body,
                        std::string const& announced = {}, bool complete = true) {
        AppendRequest request{.offset = offset};
        if (!announced.empty()) request.checksum = {Digest::Algorithm::Sha256, Sha256(announced)};
        auto append = uploads->BeginAppend(user, id, request, {});
        append->Take(body);
        return append->Finish(complete);
    }

    std::string BytesOf(Stretch const& stretch) const {
        return content.substr(static_cast<std::size_t>(stretch.offset),
                              static_cast<std::size_t>(stretch.length));
    }

    std::vector<UploadId> Fill(std::vector<Stretch> const& stretches,
                               std::optional<WholeId> const& ofWhole) {
        std::vector<UploadId> parts;
        for (Stretch const& stretch : stretches) {
            parts.push_back(
                CreatePart(stretch, ofWhole, static_cast<std::int64_t>(content.size())));
            Append(parts.back(), 0, BytesOf(stretch));
        }
        return parts;
    }

    UploadId Join(std::vector<UploadId> const& parts, std::string const& expected = {}) {
        NewUpload movie{.name = "movie.mp4", .folder = folder, .mediaType = "video/mp4"};
        return uploads->Join(
            user, movie, parts,
            expected.empty() ? std::nullopt : std::optional(ToHex(Sha256(expected))));
    }

    std::size_t FilesLeft() {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(temp.GetPath() + "/uploads"), {}));
    }

    WholeId const whole{NewUuid()};
};

TEST_F(JoinTest, PutsPartsTogether) {
    struct Row {
        char const* name;
        std::vector<Stretch> stretches;  // in the order of their coming
        bool placed;
        std::vector<std::size_t> order;  // in the movie
        bool copies;
    };
    for (Row const& row : std::vector<Row>{
             {"in their places", {{0, 400'000}, {400'000, 600'000}}, true, {0, 1}, false},
             {"the last one first", {{700'000, 300'000}, {0, 700'000}}, true, {1, 0}, false},
             {"alone", {{0, 1'000'000}}, true, {0}, false},
             {"in another order", {{0, 400'000}, {400'000, 600'000}}, true, {1, 0}, true},
             {"some of them", {{0, 400'000}, {400'000, 600'000}}, true, {1}, true},
             {"without places", {{0, 400'000}, {400'000, 600'000}}, false, {0, 1}, true},
         }) {
        SCOPED_TRACE(row.name);
        auto ids = Fill(row.stretches, row.placed ? std::optional(whole) : std::nullopt);
        std::vector<UploadId> parts;
        std::string expected;
        for (std::size_t index : row.order) {
            parts.push_back(ids[index]);
            expected += BytesOf(row.stretches[index]);
        }
        std::string file = directory.UploadPath(uploads->Get(user, ids[0]).file);
        auto before = fs::hard_link_count(file);
        std::string link = temp.GetPath() + "/link";
        fs::create_hard_link(file, link);

        UploadId joined = Join(parts, expected);
        EXPECT_EQ(Movie(joined), expected);
        EXPECT_EQ(uploads->Asset(user, joined).sha256, ToHex(Sha256(expected)));
        bool sameFile = fs::equivalent(link, directory.MoviePath(uploads->Asset(user, joined).id));
        EXPECT_EQ(sameFile, !row.copies);
        EXPECT_EQ(before, 1u);
        fs::remove(link);
        EXPECT_EQ(Join(parts, expected), joined) << "repeated, as after a lost response";
        EXPECT_EQ(RefusalOf([&] { Offset(parts[0]); }), 404);
        for (UploadId const& id : ids)
            RefusalOf([&] { uploads->Delete(user, id); });
        EXPECT_EQ(FilesLeft(), 0u);
    }
}

TEST_F(JoinTest, RefusesWhatMakesNoMovie) {
    std::vector<Stretch> const halves{{0, 500'000}, {500'000, 500'000}};
    auto good = Fill({halves[0]}, whole);
    UploadId unfinished = CreatePart(halves[1]);
    Append(unfinished, 0, content.substr(500'000, 10));
    UploadId movie = uploads->Create(
        user, {.name = "m", .folder = folder, .mediaType = "video/mp4", .length = 1}, {});
    struct Row {
        char const* name;
        std::function<void()> call;
        int status;
    };
    for (Row const& row : std::vector<Row>{
             {"no parts", [&] { Join({}); }, 400},
             {"a part twice",
              [&] {
                  Join({good[0], good[0]});
              },
              400},
             {"no part", [&] { Join({movie}); }, 400},
             {"unknown", [&] { Join({UploadId(NewUuid())}); }, 404},
             {"unfinished",
              [&] {
                  Join({good[0], unfinished});
              },
              409},
             {"overlapping",
              [&] {
                  CreatePart({499'999, 1});
              },
              409},
             {"of another length",
              [&] {
                  CreatePart({0, 1}, whole, 5);
              },
              409},
             {"past its end", [&] { Append(good[0], 500'000, "x"); }, 413},
         }) {
        EXPECT_EQ(RefusalOf(row.call), row.status) << row.name;
    }
    Append(unfinished, 10, content.substr(500'010));
    UploadId joined = Join({good[0], unfinished}, content);
    EXPECT_EQ(RefusalOf([&] { Append(joined, 1'000'000, ""); }), 403);
    EXPECT_EQ(RefusalOf([&] { uploads->Delete(user, joined); }), 403) << "published";
}

TEST_F(JoinTest, ResumesEachPartAfterARestart) {
    UploadId first = CreatePart({0, 500'000});
    UploadId second = CreatePart({500'000, 500'000});
    Append(second, 0, content.substr(500'000, 200'000));
    Append(first, 0, content.substr(0, 500'000));
    // Bytes of a damaged body lie beyond the confirmed ones.
    EXPECT_EQ(RefusalOf([&] { Append(second, 200'000, test::Noise(300'000, 5), "other"); }), 460);
    auto killed = uploads->BeginAppend(user, second, {.offset = 200'000}, {});
    killed->Take(test::Noise(300'000, 6));
    killed.reset();
    Restart();
    EXPECT_EQ(Offset(first), 500'000);
    EXPECT_EQ(Offset(second), 200'000);
    Append(second, 200'000, content.substr(700'000));
    EXPECT_EQ(Movie(Join({first, second}, content)), content);
}

TEST_F(JoinTest, LowersTheOffsetOfPartsWhoseBytesAreGone) {
    std::vector<Stretch> const stretches{{0, 262'144}, {262'144, 262'144}, {524'288, 475'712}};
    auto parts = Fill(stretches, whole);
    // A power failure before the system had written these.
    std::string file = directory.UploadPath(uploads->Get(user, parts[0]).file);
    int descriptor = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
    bool punched = ::fallocate(descriptor, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE,
                               262'144 + 131'072, 65'536) == 0;
    ::close(descriptor);
    if (!punched) GTEST_SKIP() << "the file system makes no holes";
    Restart();
    EXPECT_EQ(RefusalOf([&] { Join(parts, content); }), 409);
    EXPECT_EQ(Offset(parts[0]), 262'144);
    EXPECT_EQ(Offset(parts[1]), 131'072);
    EXPECT_EQ(Offset(parts[2]), 475'712);
    Append(parts[1], 131'072, content.substr(393'216, 131'072));
    EXPECT_EQ(Movie(Join(parts, content)), content);
}

TEST_F(JoinTest, DeletesThePartsOfAMovieWithAnotherChecksum) {
    auto parts = Fill({{0, 600'000}, {600'000, 400'000}}, whole);
    EXPECT_EQ(RefusalOf([&] { Join(parts, "other"); }), 460);
    EXPECT_EQ(RefusalOf([&] { Offset(parts[1]); }), 404);
    EXPECT_EQ(FilesLeft(), 0u);
}

TEST_F(JoinTest, HashesWhatComesInPlaceOfADeletedPart) {
    UploadId wrong = CreatePart({0, 600'000});
    UploadId rest = CreatePart({600'000, 400'000});
    Append(wrong, 0, test::Noise(600'000, 9));
    Append(rest, 0, content.substr(600'000));
    uploads->Delete(user, wrong);
    EXPECT_EQ(RefusalOf([&] { Offset(wrong); }), 404);
    UploadId right = CreatePart({0, 600'000});
    Append(right, 0, content.substr(0, 600'000));
    EXPECT_EQ(Movie(Join({right, rest}, content)), content);
}

TEST_F(JoinTest, ReservesRoomForTheWholeAndKeepsItsPartsTogether) {
    freeBytes = Uploads::kReserveBytes + 999'999;
    EXPECT_EQ(RefusalOf([&] { CreatePart({0, 10}); }), 507) << "the whole does not fit";
    ++freeBytes;
    UploadId first = CreatePart({0, 10});
    UploadId second = CreatePart({10, 10});
    EXPECT_EQ(RefusalOf([&] { CreatePart({0, 1}, WholeId(NewUuid()), 1); }), 507);
    Append(first, 0, content.substr(0, 10));
    now += Uploads::kExpireAfterSeconds - 1;
    Append(second, 0, content.substr(10, 5));
    now += 2;
    Restart();
    EXPECT_EQ(Offset(first), 10) << "its movie has grown since";
    now += Uploads::kExpireAfterSeconds;
    Restart();
    EXPECT_EQ(RefusalOf([&] { Offset(first); }), 404);
    EXPECT_EQ(FilesLeft(), 0u);
}

}  // namespace
}  // namespace quilloservice
