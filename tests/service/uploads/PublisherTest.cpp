#include "service/uploads/Publisher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "service/base/ApiError.h"
#include "service/base/Digest.h"
#include "service/base/File.h"
#include "service/base/Uuid.h"
#include "service/store/ChangeFeed.h"
#include "service/store/DataDirectory.h"
#include "service/store/Nodes.h"
#include "service/store/SampleData.h"
#include "service/store/Store.h"
#include "service/uploads/Uploads.h"
#include "tests/service/ApiClient.h"
#include "tests/service/RunningService.h"

namespace quilloservice {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

constexpr std::string_view kContent = "a whole movie";

std::string ReadFile(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A publication changes the disk more often than this. A database server makes most of the changes
/// in processes of its own.
int LeastChanges() {
    return test::DatabaseFor(".").empty() ? 10 : 5;
}

/// The parts of a service on a data directory; one at a time.
struct Opened {
    explicit Opened(std::string const& path) : directory(path), engine(test::OpenStore(path)) {
        MakeSampleData(store, SampleSize::Small);
        uploads.Recover();
    }

    UploadId Create(UserId const& user, FolderId const& folder, StackId const& stack) {
        return uploads.Create(user,
                              {.name = "movie.mp4",
                               .folder = folder,
                               .stack = stack,
                               .mediaType = "video/mp4",
                               .length = kContent.size()},
                              std::nullopt);
    }

    /// Calls Create; returns the error's status, 0 on success.
    int Refusal(UserId const& user, FolderId const& folder, StackId const& stack) {
        try {
            Create(user, folder, stack);
            return 0;
        } catch (ApiError const& error) {
            return error.status;
        }
    }

    /// Writes all of the upload's bytes to its file, or to the movie's if `renamed`, without
    /// publishing.
    void Fill(UserId const& user, UploadId const& id, bool renamed = false) {
        UploadRecord upload = uploads.Get(user, id);
        File(renamed ? directory.MoviePath(upload.asset) : directory.UploadPath(id),
             File::Mode::Write)
            .WriteAt(0, kContent);
        store.Write(
            [&](Database& database) { SetConfirmed(database, id, kContent.size() - 1, now); });
    }

    void Publish(UploadRecord const& upload) {
        Digest whole;
        whole.Update(kContent);
        File file(directory.UploadPath(upload.id), File::Mode::Write);
        Publisher(directory, store, changes, SystemTime).Publish(upload, file, whole);
    }

    DataDirectory directory;
    std::unique_ptr<Store> const engine;
    Store& store = *engine;
    ChangeFeed changes{store};
    std::int64_t now = SystemTime();
    Uploads uploads{directory, store, changes, [this] { return now; }};
};

/// Whether the process is entering a system call that may change the disk.
bool EntersAChange(pid_t process) {
    __ptrace_syscall_info info{};
    ::ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof(info), &info);
    if (info.op != PTRACE_SYSCALL_INFO_ENTRY) return false;
    switch (info.entry.nr) {
#ifdef SYS_rename
        case SYS_rename:
        case SYS_mkdir:
        case SYS_unlink:
#endif
        case SYS_renameat:
        case SYS_renameat2:
        case SYS_mkdirat:
        case SYS_unlinkat:
        case SYS_openat:
        case SYS_write:
        case SYS_pwrite64:
        case SYS_copy_file_range:
        case SYS_ftruncate:
        case SYS_fallocate:
        case SYS_fsync:
        case SYS_fdatasync:
            return true;
        default:
            return false;
    }
}

/// Runs `work` in a child process and kills that before its `count`th change of the disk after it
/// has called `prepared`. Returns whether the child got that far.
bool IsKilledAt(int count, std::function<void(std::function<void()> const& prepared)> const& work) {
    pid_t child = ::fork();
    if (child == 0) {
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        work([] { std::raise(SIGSTOP); });
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFSTOPPED(status)) throw std::runtime_error("the process ended before it was prepared");
    if (::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0)
        throw std::runtime_error("ptrace is not to be had here");
    for (int changes = 0; changes < count;) {
        ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        ::waitpid(child, &status, 0);
        if (WIFEXITED(status)) return false;
        if (WIFSIGNALED(status)) throw std::runtime_error("the process failed");
        if (WSTOPSIG(status) == (SIGTRAP | 0x80) && EntersAChange(child)) ++changes;
    }
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
    return true;
}

class PublisherTest : public testing::Test {
protected:
    static FolderId FolderOf(std::string const& account, std::string const& workspace,
                             std::string const& project) {
        std::string id = UuidOf("account/" + account);
        for (std::string const& name : {workspace, project, project})
            id = UuidOf(id + "/" + name + "/1");
        return FolderId(id);
    }

    /// Restarts the service, checks that the upload's offset and the folder's list agree, and
    /// completes the upload.
    void ExpectRecovery(std::string const& data, UploadId const& id, StackId const& stack,
                        std::string const& when) {
        Options options;
        options.dataDirectory = data;
        test::RunningService service(options);
        test::ApiClient client(service.GetPort());
        std::string upload = "/v1/uploads/" + id.GetText();
        std::size_t offset = std::stoul(client.OffsetOf(upload));
        std::string listed = client.Get("/v1/folders/" + folder.GetText() + "/children").dump();
        if (offset < kContent.size()) {
            EXPECT_THAT(listed, Not(HasSubstr(stack.GetText()))) << when;
            auto answer = client.Append(upload, offset, std::string(kContent.substr(offset)));
            EXPECT_EQ(answer->status, 204) << when << answer->body;
        } else {
            EXPECT_THAT(listed, HasSubstr(stack.GetText())) << when;
        }
        std::string asset = client.Get(upload + "/asset")["asset"]["id"];
        EXPECT_EQ(ReadFile(data + "/movies/" + asset), kContent) << when;
    }

    UserId const user = SampleUserId();
    UserId const other{UuidOf("user/other")};
    FolderId const folder = FolderOf("Northlight Pictures", "Feature Films", "The Long River");
    FolderId const freelance =
        FolderOf("Harbour Street Studio", "Documentaries", "Lighthouse Keepers");
    FolderId const strangers = FolderOf("Somebody Else's Account", "Private", "Closed Set");
};

TEST_F(PublisherTest, SurvivesACrashAtAnyPoint) {
    for (bool renamed : {false, true}) {
        int steps = 0;
        for (bool killed = true; killed; ++steps) {
            test::TempDirectory data;
            StackId stack(NewUuid());
            UploadId upload;
            {
                Opened opened(data.GetPath());
                upload = opened.Create(user, folder, stack);
                opened.Fill(user, upload, renamed);
            }
            killed = IsKilledAt(steps + 1, [&](auto const& prepared) {
                // A movie that was renamed but not recorded is recorded at the start.
                if (renamed) prepared();
                Opened opened(data.GetPath());
                if (renamed) return;
                UploadRecord record = opened.uploads.Get(user, upload);
                prepared();
                opened.Publish(record);
            });
            ExpectRecovery(data.GetPath(), upload, stack, "change " + std::to_string(steps + 1));
        }
        EXPECT_GT(steps, LeastChanges()) << "too few changes of the disk were traced";
        RecordProperty(renamed ? "recovery" : "publication", steps);
    }
}

TEST_F(PublisherTest, SurvivesACrashAtAnyPointOfAJoin) {
    std::string_view const halves[] = {kContent.substr(0, 6), kContent.substr(6)};
    for (bool placed : {false, true}) {
        int steps = 0;
        for (bool killed = true; killed; ++steps) {
            test::TempDirectory data;
            std::vector<UploadId> parts;
            NewUpload movie{.name = "movie.mp4", .folder = folder, .mediaType = "video/mp4"};
            {
                Opened opened(data.GetPath());
                NewUpload part{.mediaType = "video/mp4", .isPart = true, .namesFolder = false};
                if (placed) part.place = {WholeId(NewUuid()), 0, kContent.size()};
                for (std::string_view half : halves) {
                    part.length = static_cast<std::int64_t>(half.size());
                    parts.push_back(opened.uploads.Create(user, part, std::nullopt));
                    auto append = opened.uploads.BeginAppend(user, parts.back(), {}, {});
                    append->Take(half);
                    append->Finish(true);
                    if (placed) part.place->offset += part.length;
                }
            }
            killed = IsKilledAt(steps + 1, [&](auto const& prepared) {
                Opened opened(data.GetPath());
                prepared();
                opened.uploads.Join(user, movie, parts, std::nullopt);
            });
            Opened opened(data.GetPath());
            UploadId joined = opened.uploads.Join(user, movie, parts, std::nullopt);
            EXPECT_EQ(ReadFile(opened.directory.MoviePath(opened.uploads.Asset(user, joined).id)),
                      kContent)
                << "change " << steps + 1;
        }
        EXPECT_GT(steps, LeastChanges()) << "too few changes of the disk were traced";
    }
}

TEST_F(PublisherTest, ReservesTheStackOfAnUnfinishedUpload) {
    test::TempDirectory data;
    Opened opened(data.GetPath());
    opened.store.Write([&](Database& database) {
        database.Run("INSERT INTO memberships (user, account) VALUES (?, ?)", other,
                     UuidOf("account/Harbour Street Studio"));
    });
    FolderId const& shared = freelance;
    StackId mine(NewUuid());
    StackId ours(NewUuid());
    opened.Create(user, folder, mine);
    opened.Create(other, shared, ours);
    struct Row {
        UserId user;
        FolderId folder;
        StackId stack;
        int refusal;
    };
    for (Row const& row : std::vector<Row>{
             {other, strangers, mine, 403},  // its upload could not be recorded
             {other, shared, mine, 403},
             {user, shared, mine, 0},  // both uploads are the same user's
             {other, shared, mine, 403},
             {user, folder, ours, 409},  // the other user is no member there
             {user, shared, ours, 0},
         }) {
        EXPECT_EQ(opened.Refusal(row.user, row.folder, row.stack), row.refusal)
            << row.user << row.folder << row.stack;
    }
    opened.store.Read([&](Database& database) {
        EXPECT_FALSE(FindNode(database, mine)) << "reserved stacks do not exist yet";
    });
    opened.now += Uploads::kExpireAfterSeconds + 1;
    EXPECT_EQ(opened.Refusal(other, strangers, mine), 0) << "the reservation has expired";
}

TEST_F(PublisherTest, SetsAsideMoviesThatCannotBeRecorded) {
    test::TempDirectory data;
    UploadId taken, damaged, later, good;
    std::vector<FileId> aside;
    {
        Opened opened(data.GetPath());
        StackId stack(NewUuid());
        for (UploadId* upload : {&taken, &damaged, &later, &good}) {
            *upload = opened.Create(user, folder, upload == &taken ? stack : StackId(NewUuid()));
            opened.Fill(user, *upload, true);
        }
        for (UploadId const& upload : {taken, damaged})
            aside.push_back(opened.uploads.Get(user, upload).asset);
        std::ofstream(opened.directory.MoviePath(aside[1]), std::ios::app) << "and more";
        FileId const blocked = opened.uploads.Get(user, later).asset;
        opened.store.Write([&](Database& database) {
            // The movie's own ID is taken, which is an error of the database.
            InsertNode(database, {blocked, std::string(kind::kFile),
                                  AccountId(UuidOf("account/Northlight Pictures")), folder, "x"});
            // Possible in stores of earlier versions, which reserved no stacks.
            InsertNode(database,
                       {stack, std::string(kind::kVersionStack),
                        AccountId(UuidOf("account/Somebody Else's Account")), strangers, "theirs"});
        });
    }
    Options options;
    options.dataDirectory = data.GetPath();
    testing::internal::CaptureStderr();
    test::RunningService service(options);
    std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 3) << log;
    for (UploadId const& upload : {taken, damaged, later})
        EXPECT_THAT(log, HasSubstr("upload " + upload.GetText()));
    EXPECT_EQ(ReadFile(data.GetPath() + "/set-aside/" + aside[0].GetText()), kContent);
    EXPECT_EQ(ReadFile(data.GetPath() + "/set-aside/" + aside[1].GetText()),
              std::string(kContent) + "and more");

    test::ApiClient client(service.GetPort());
    auto pathOf = [](UploadId const& upload) { return "/v1/uploads/" + upload.GetText(); };
    for (UploadId const& upload : {taken, damaged})
        EXPECT_EQ(client.Send("HEAD", pathOf(upload))->status, 404);
    EXPECT_EQ(client.OffsetOf(pathOf(good)), std::to_string(kContent.size()));
    EXPECT_EQ(client.OffsetOf(pathOf(later)), std::to_string(kContent.size() - 1));
}

}  // namespace
}  // namespace quilloservice
