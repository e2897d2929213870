#include "service/uploads/Uploads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "service/base/ApiError.h"
#include "service/base/Text.h"
#include "service/base/Uuid.h"
#include "service/store/Nodes.h"
#include "service/store/ReviewLinks.h"
#include "tests/service/uploads/UploadsFixture.h"

namespace quilloservice {
namespace {

namespace fs = std::filesystem;
using test::Noise;

/// A request's body; unless it is complete, the connection is cut after it.
struct Body {
    explicit Body(std::string content, bool isComplete = true)
        : bytes(std::move(content)), complete(isComplete) {}
    std::string bytes;
    bool complete;
};

void TakeInPieces(UploadAppend& append, std::string_view bytes) {
    while (!bytes.empty()) {
        std::string_view piece = bytes.substr(0, 100'000);
        bytes.remove_prefix(piece.size());
        append.Take(piece);
    }
}

class UploadsTest : public UploadsFixture {
protected:
    UploadId Create(std::size_t length, std::optional<StackId> const& stack = {},
                    std::optional<FolderId> const& into = {}) {
        NewUpload request{.name = "movie.mp4",
                          .folder = into.value_or(folder),
                          .stack = stack,
                          .mediaType = "video/mp4",
                          .length = static_cast<std::int64_t>(length)};
        return uploads->Create(user, request, std::nullopt);
    }

    std::int64_t Append(UploadId const& id, std::int64_t offset, Body const& body,
                        std::string const& announced = {}, std::string const& whole = {}) {
        AppendRequest request{.offset = offset};
        if (!announced.empty()) request.checksum = {Digest::Algorithm::Sha256, Sha256(announced)};
        if (!whole.empty()) request.contentSha256 = ToHex(Sha256(whole));
        auto append = uploads->BeginAppend(user, id, request, {});
        TakeInPieces(*append, body.bytes);
        return append->Finish(body.complete);
    }

    /// Calls Append; returns the error's status, 0 on success.
    template <typename... Arguments>
    int Refusal(Arguments const&... arguments) {
        try {
            Append(arguments...);
            return 0;
        } catch (ApiError const& error) {
            return error.status;
        }
    }

    std::vector<Node> Children(FolderId const& parent) {
        return store.Read([&](Database& database) { return ChildrenOf(database, parent); });
    }
};

TEST_F(UploadsTest, PublishesAMovieSentInSeveralRequests) {
    UploadId id = Create(content.size());
    EXPECT_EQ(Append(id, 0, Body(content.substr(0, 300'000))), 300'000);
    EXPECT_THROW(static_cast<void>(uploads->Asset(user, id)), ApiError);
    EXPECT_EQ(Append(id, 300'000, Body(content.substr(300'000, 1)), content.substr(300'000, 1)),
              300'001);
    EXPECT_EQ(Append(id, 300'001, Body(content.substr(300'001)), {}, content), 1'000'000);
    EXPECT_EQ(Movie(id), content);
    EXPECT_EQ(uploads->Asset(user, id).sha256, ToHex(Sha256(content)));
    EXPECT_FALSE(fs::exists(directory.UploadPath(id)));
    // A repetition of the last request, as after a lost response.
    EXPECT_EQ(Append(id, 1'000'000, Body("")), 1'000'000);
    EXPECT_EQ(Refusal(id, 1'000'000, Body("x")), 0) << "ignored after the publication";
    EXPECT_EQ(Movie(id), content);
    EXPECT_EQ(Refusal(id, 0, Body(content)), 409);
}

TEST_F(UploadsTest, KeepsAPartialBodyOnlyWithoutAChecksum) {
    UploadId id = Create(content.size());
    EXPECT_EQ(Refusal(id, 0, Body(content.substr(0, 400'000), false)), 400);
    EXPECT_EQ(Offset(id), 400'000);
    std::string rest = content.substr(400'000);
    EXPECT_EQ(Refusal(id, 400'000, Body(rest.substr(0, 500'000), false), rest), 400);
    EXPECT_EQ(Offset(id), 400'000);
    EXPECT_EQ(fs::file_size(directory.UploadPath(id)), 400'000u);
    EXPECT_EQ(Append(id, 400'000, Body(rest), rest, content), 1'000'000);
    EXPECT_EQ(Movie(id), content);
}

TEST_F(UploadsTest, RevertsABodyWithAWrongChecksum) {
    UploadId id = Create(content.size());
    EXPECT_EQ(Refusal(id, 0, Body(content.substr(0, 600'000)), std::string("other")), 460);
    EXPECT_EQ(Offset(id), 0);
    Append(id, 0, Body(content.substr(0, 600'000)));
    std::string damaged = content.substr(600'000);
    damaged[5] ^= 1;
    EXPECT_EQ(Refusal(id, 600'000, Body(damaged), content.substr(600'000)), 460);
    EXPECT_EQ(Offset(id), 600'000);
    Append(id, 600'000, Body(content.substr(600'000)), content.substr(600'000), content);
    EXPECT_EQ(Movie(id), content);
}

TEST_F(UploadsTest, RestartsTheUploadIfTheMoviesChecksumIsWrong) {
    UploadId id = Create(content.size());
    EXPECT_EQ(Refusal(id, 0, Body(Noise(content.size(), 2)), std::string(), content), 460);
    EXPECT_EQ(Offset(id), 0);
    EXPECT_TRUE(Children(folder).size() == 3) << "nothing is published";
    Append(id, 0, Body(content), {}, content);
    EXPECT_EQ(Movie(id), content);
}

TEST_F(UploadsTest, RefusesABodyBeyondTheLength) {
    UploadId id = Create(500'000);
    std::string start = content.substr(0, 200'000);
    Append(id, 0, Body(start));
    // The length is not announced.
    EXPECT_EQ(Refusal(id, 200'000, Body(content)), 413);
    EXPECT_EQ(Offset(id), 200'000);
    Append(id, 200'000, Body(content.substr(200'000, 300'000)), {}, content.substr(0, 500'000));
    EXPECT_EQ(Movie(id), content.substr(0, 500'000));
}

TEST_F(UploadsTest, ResumesAtTheConfirmedOffsetAfterARestart) {
    std::string large = Noise(20'000'000);
    UploadId id = Create(large.size());
    // A crash in the middle of a body: bytes beyond the confirmed offset are discarded.
    auto killed = uploads->BeginAppend(user, id, {}, {});
    TakeInPieces(*killed, large.substr(0, 18'000'000));
    killed.reset();
    Restart();
    std::int64_t offset = Offset(id);
    EXPECT_GT(offset, 8'000'000);
    EXPECT_LE(offset, 18'000'000);
    std::string rest = large.substr(static_cast<std::size_t>(offset));
    Append(id, offset, Body(rest), rest, large);
    EXPECT_EQ(Movie(id), large);
}

TEST_F(UploadsTest, LowersTheOffsetIfTheFileIsShorter) {
    UploadId id = Create(content.size());
    Append(id, 0, Body(content.substr(0, 800'000)));
    fs::resize_file(directory.UploadPath(id), 100'000);
    Restart();
    EXPECT_EQ(Refusal(id, 800'000, Body(content.substr(800'000))), 409);
    EXPECT_EQ(Offset(id), 100'000);
    Append(id, 100'000, Body(content.substr(100'000)), {}, content);
    EXPECT_EQ(Movie(id), content);
}

TEST_F(UploadsTest, ReachesTheLengthOnlyWithThePublication) {
    UploadId id = Create(content.size());
    fs::remove(directory.GetMoviesPath());
    EXPECT_ANY_THROW(Append(id, 0, Body(content)));
    EXPECT_LT(Offset(id), 1'000'000);
    fs::create_directory(directory.GetMoviesPath());
    auto offset = static_cast<std::size_t>(Offset(id));
    Append(id, Offset(id), Body(content.substr(offset)), {}, content);
    EXPECT_EQ(Movie(id), content);
}

TEST_F(UploadsTest, RecordsAMovieRenamedBeforeACrash) {
    for (bool restarted : {true, false}) {
        UploadId id = Create(content.size());
        Append(id, 0, Body(content.substr(0, 999'999)));
        std::string moviePath = directory.MoviePath(uploads->Get(user, id).asset);
        fs::rename(directory.UploadPath(id), moviePath);
        std::ofstream(moviePath, std::ios::app | std::ios::binary) << content.back();
        if (restarted) {
            Restart();
        } else {
            EXPECT_EQ(Refusal(id, 999'999, Body(content.substr(999'999))), 409);
        }
        EXPECT_EQ(Offset(id), 1'000'000);
        EXPECT_EQ(uploads->Asset(user, id).sha256, ToHex(Sha256(content)));
    }
}

TEST_F(UploadsTest, ANewerRequestTakesOverTheUpload) {
    for (bool checked : {false, true}) {
        UploadId id = Create(content.size());
        Append(id, 0, Body(content.substr(0, 10)));
        AppendRequest request{.offset = 10};
        if (checked) request.checksum = {Digest::Algorithm::Sha256, Sha256(content.substr(10))};
        int overtaken = 0;
        auto stalled = uploads->BeginAppend(user, id, request, [&] { ++overtaken; });
        stalled->Take("something else");
        EXPECT_EQ(Refusal(id, 11, Body("intruder")), 409);
        EXPECT_EQ(overtaken, 0) << "a refused request takes nothing over";

        auto newer = uploads->BeginAppend(user, id, {.offset = 10}, {});
        EXPECT_EQ(overtaken, 1);
        newer->Take(content.substr(10, 500'000));
        EXPECT_THROW(stalled->Take("more of it"), ApiError);
        EXPECT_THROW(stalled->Finish(true), ApiError);
        newer->Take(content.substr(500'010));
        EXPECT_EQ(newer->Finish(true), 1'000'000);
        EXPECT_EQ(Movie(id), content);
    }
}

TEST_F(UploadsTest, RefusesToTakeOverDuringPublication) {
    UploadId id = Create(content.size());
    auto append = uploads->BeginAppend(user, id, {}, {});
    append->Take(content);
    int refusal = 0;
    changes.Listen([&] { refusal = Refusal(id, 0, Body(content)); });
    EXPECT_EQ(append->Finish(true), 1'000'000);
    EXPECT_EQ(refusal, 409);
    EXPECT_EQ(Movie(id), content);
}

TEST_F(UploadsTest, DeletesUploadsIdleForAWeek) {
    UploadId abandoned = Create(content.size());
    Append(abandoned, 0, Body("begun"));
    UploadId published = Create(1);
    Append(published, 0, Body("x"));
    UploadId unrecorded = Create(1);
    std::ofstream(directory.MoviePath(uploads->Get(user, unrecorded).asset)) << "y";
    UploadId stuck = Create(1);
    fs::create_symlink("/elsewhere", directory.MoviePath(uploads->Get(user, stuck).asset));
    now += Uploads::kExpireAfterSeconds - 1;
    UploadId growing = Create(content.size());
    EXPECT_EQ(Offset(abandoned), 5);
    now += 2;
    UploadId later = Create(content.size());
    EXPECT_THROW(static_cast<void>(uploads->Get(user, abandoned)), ApiError);
    EXPECT_FALSE(fs::exists(directory.UploadPath(abandoned)));
    EXPECT_EQ(Offset(growing), 0);
    EXPECT_EQ(Movie(published), "x");
    EXPECT_EQ(Offset(stuck), 0) << "it does not block other uploads";
    EXPECT_EQ(Movie(unrecorded), "y") << "a whole movie is published instead";
}

TEST_F(UploadsTest, ReservesDiskSpaceForUnfinishedUploads) {
    auto refusal = [&](std::int64_t length) {
        try {
            Create(static_cast<std::size_t>(length));
            return 0;
        } catch (ApiError const& error) {
            return error.status;
        }
    };
    freeBytes = Uploads::kReserveBytes + 999;
    EXPECT_EQ(refusal(1000), 507);
    ++freeBytes;
    UploadId id = Create(1000);
    EXPECT_EQ(refusal(1), 507);
    Append(id, 0, Body(content.substr(0, 400)));
    freeBytes -= 400;
    EXPECT_EQ(refusal(1), 507) << "the rest of the first upload is reserved";
    Append(id, 400, Body(content.substr(400, 600)));
    freeBytes -= 600;
    EXPECT_EQ(refusal(1), 507);
    freeBytes += 500;
    EXPECT_EQ(refusal(500), 0) << "published uploads reserve nothing";
    now += Uploads::kExpireAfterSeconds + 1;
    EXPECT_EQ(refusal(500), 0) << "deleted uploads reserve nothing";

    Uploads real(directory, store, changes, [this] { return now; });
    NewUpload request{.name = "m", .folder = folder, .mediaType = "video/mp4"};
    request.length = static_cast<std::int64_t>(fs::space(temp.GetPath()).capacity);
    EXPECT_THROW(real.Create(user, request, std::nullopt), ApiError) << "as large as the disk";
    request.length = 1;
    EXPECT_NO_THROW(real.Create(user, request, std::nullopt));
}

TEST_F(UploadsTest, ExpiresIdempotencyKeysAfterAWeek) {
    IdempotencyKey const keys[] = {IdempotencyKey(NewUuid()), IdempotencyKey(NewUuid())};
    ProjectId project(
        store.Read([&](Database& database) { return FindNode(database, folder)->parent.value(); }));
    ReviewLinks links(store, [this] { return now; });
    auto make = [&](std::string const& name) {
        NewUpload request{.name = name,
                          .folder = folder,
                          .mediaType = "video/mp4",
                          .metadata = name,
                          .length = 1};
        return std::pair(uploads->Create(user, request, keys[0]),
                         links.Create(user, project, name, keys[1]).id);
    };
    auto first = make("first");
    Append(first.first, 0, Body("x"));
    now += 7 * 24 * 3600 - 1;
    EXPECT_EQ(make("first"), first);
    EXPECT_THROW(make("other"), ApiError);
    now += 1;
    auto second = make("other");
    EXPECT_NE(second.first, first.first);
    EXPECT_NE(second.second, first.second);
    EXPECT_EQ(make("other"), second);
}

TEST_F(UploadsTest, NumbersVersionsAndMovesTheStackToTheNewest) {
    StackId stack(NewUuid());
    auto publish = [&](FolderId const& into) {
        UploadId id = Create(1, stack, into);
        Append(id, 0, Body("x"));
        return uploads->Asset(user, id);
    };
    PublishedAsset first = publish(folder);
    EXPECT_EQ(first.version, 1);
    EXPECT_EQ(first.stack, stack);
    EXPECT_EQ(first.folder, folder);
    EXPECT_EQ(publish(folder).version, 2);
    auto isStack = [&](Node const& node) { return node.id == stack; };
    auto inFolder = Children(folder);
    ASSERT_EQ(std::count_if(inFolder.begin(), inFolder.end(), isStack), 1);
    EXPECT_EQ(std::find_if(inFolder.begin(), inFolder.end(), isStack)->name, "movie.mp4");
    EXPECT_EQ(std::count_if(inFolder.begin(), inFolder.end(),
                            [](Node const& node) { return node.kind == kind::kFile; }),
              0);

    PublishedAsset third = publish(otherFolder);
    EXPECT_EQ(third.version, 3);
    EXPECT_EQ(third.folder, otherFolder);
    auto left = Children(folder);
    auto moved = Children(otherFolder);
    EXPECT_EQ(std::count_if(left.begin(), left.end(), isStack), 0);
    EXPECT_EQ(std::count_if(moved.begin(), moved.end(), isStack), 1);
}

TEST_F(UploadsTest, RefusesForeignAndInvalidStacks) {
    StackId strangers = store.Read([&](Database& database) {
        Statement row = database.Query(
            "SELECT id FROM nodes WHERE kind = 'version_stack' AND account NOT IN "
            "(SELECT account FROM memberships WHERE user = ?)",
            user);
        row.Next();
        return row.Id<StackId>(0);
    });
    StackId noStack(folder.GetText());
    for (auto const& [stack, status] : {std::pair(strangers, 403), std::pair(noStack, 409)}) {
        try {
            Create(1, stack);
            ADD_FAILURE() << "accepted instead of " << status;
        } catch (ApiError const& error) {
            EXPECT_EQ(error.status, status);
        }
    }
}

}  // namespace
}  // namespace quilloservice
