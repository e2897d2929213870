#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "moxcore/config/Error.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/messaging/Station.h"
#include "quilloauth/AuthManager.h"
#include "quilloauth/AuthSession.h"
#include "quilloclient/ServiceDatastore.h"
#include "quillocommon/ServiceAddress.h"
#include "quillosdk/QuilloClient.h"
#include "quillosdk/RetryPolicy.h"
#include "tests/support/FailureLog.h"
#include "tests/support/ServiceProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace quillosdk;
using moxcore::config::ExtractMessageFromException;
using moxcore::config::ExtractResultFromException;

/// The libraries as they are, against the service as it is.
class RealServiceTest : public testing::Test {
protected:
    using UploadFuture = moxcore::async::Future<std::shared_ptr<UploadResponse>>;

    void SetUp() override {
        RetryPolicy::SetRandomSource([] { return 0.02; });
    }

    void TearDown() override {
        if (auth) auth->Stop();
        RetryPolicy::SetRandomSource({});
    }

    void Serve(std::vector<std::string> const& switches = {}) {
        service.emplace(directory.Path() / "data", switches);
        ASSERT_TRUE(quillocommon::SetServiceAddress(service->Address()));
        auth = std::make_shared<quilloauth::AuthSession>(
            "test", "http://127.0.0.1/", (directory.Path() / "tokens.json").string());
        client = std::make_shared<QuilloClient>(QuilloConfig("test"), [this](auto const&) {
            static_cast<void>(auth->GetAccessToken().Then([this](auto const& token) {
                static_cast<void>(client->UpdateAccessToken(token.Get()));
            }));
        });
        ASSERT_FALSE(auth->Login().IsSuccess());  // it is answered by "a session exists"
        ASSERT_TRUE(client->UpdateAccessToken(auth->GetAccessToken().Get()).IsSuccess());
    }

    /// The root folder and the ID of the first project that there is.
    Project FirstProject() {
        auto const account = client->GetAccounts()
                                 .GetCurrentUserAccountList({})
                                 .Get()
                                 ->GetCurrentUserAccountListObject()
                                 .at(0);
        auto const workspace =
            client->GetWorkspaces()
                .GetWorkspacesByAccount(GetWorkspacesByAccountRequest(account.id))
                .Get()
                ->GetWorkspaceList()
                .at(0);
        return client->GetProjects()
            .GetProjectsByWorkspace(GetProjectsByWorkspaceRequest(workspace.id))
            .Get()
            ->GetProjectList()
            .at(0);
    }

    UploadFuture Upload(std::size_t size, UploadRequest::Progress progress = {}) {
        std::string movie(size, '\0');
        std::uint32_t state = 7;
        for (auto& byte : movie)
            byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
        UploadRequest request(*FirstProject().rootAsset.id,
                              directory.Write("movie.mp4", movie).string(), std::move(progress));
        request.SetAutoversionId(quillocommon::Guid::CreateUnique());
        quillocommon::Guid id;
        return client->GetTransferManager().Upload(request, id);
    }

    /// The upload has ended well: the service has told the checksum of what was read.
    void ExpectPublished(UploadFuture const& upload) {
        upload.Wait();
        ASSERT_FALSE(upload.GetException()) << ExtractMessageFromException(upload.GetException());
        EXPECT_TRUE(upload.Get()->IsSuccessful());
        EXPECT_EQ(upload.Get()->GetAssetObject().name, "movie.mp4");
        EXPECT_TRUE(failures.All().empty());
    }

    testsupport::TemporaryDirectory directory;
    testsupport::FailureLog failures;
    std::optional<testsupport::ServiceProcess> service;
    std::shared_ptr<quilloauth::AuthSession> auth;
    std::shared_ptr<QuilloClient> client;
};

/// Counts what is posted at a station.
class MessageCount final : public moxcore::messaging::Listener {
public:
    explicit MessageCount(moxcore::utility::ImmutableString station) : station(std::move(station)) {
        AddRawListener(this->station, this);
    }
    ~MessageCount() override { RemoveRawListener(station, this); }

    void ListenToMessage(moxcore::messaging::Message const&) override {
        ++count;
        count.notify_all();
    }

    void WaitFor(std::size_t wanted) const {
        for (auto seen = count.load(); seen < wanted; seen = count)
            count.wait(seen);
    }

private:
    moxcore::utility::ImmutableString const station;
    std::atomic<std::size_t> count = 0;
};

constexpr std::size_t kMegabytes = std::size_t{1} << 20;

TEST_F(RealServiceTest, SharesAMovie) {
    Serve();
    EXPECT_FALSE(client->GetAccounts().GetCurrentUser({}).Get()->GetUserObject().name.empty());
    auto const project = FirstProject();
    auto const before =
        client->GetAssets().GetChildAssets(GetChildAssetsRequest(*project.rootAsset.id)).Get();
    EXPECT_TRUE(before->GetHeader().contains("X-RATELIMIT-LIMIT"));

    std::atomic<std::uint64_t> done = 0;
    auto const upload =
        Upload(30 * kMegabytes + 1, [&](std::uint64_t d, std::uint64_t) { done = d; });
    ExpectPublished(upload);
    EXPECT_EQ(done, 30 * kMegabytes + 1);
    auto const after =
        client->GetAssets().GetChildAssets(GetChildAssetsRequest(*project.rootAsset.id)).Get();
    EXPECT_EQ(after->GetChildAssetsObject().size(), before->GetChildAssetsObject().size() + 1);

    auto& links = client->GetReviewLinks();
    auto const link = links.CreateReviewLink({project.id, "For review"}).Get();
    ASSERT_TRUE(link->GetReviewLinkObject().url);
    auto const added = links.AddAssetsToReviewLink(
        {*link->GetReviewLinkObject().id, {*upload.Get()->GetAssetObject().id}});
    EXPECT_TRUE(added.Get()->IsSuccessful());
    auto const movie = Transport::Get()->Send(
        {.method = "HEAD", .url = *link->GetReviewLinkObject().url + "/movie"});
    EXPECT_EQ(movie.Get()->status, 302);

    EXPECT_TRUE(links.AddAssetsToReviewLink({quillocommon::Guid::CreateUnique(), {}})
                    .Then([](auto const& future) { return future.GetException() != nullptr; })
                    .Get());
    EXPECT_EQ(failures.All().size(), 1u);
}

TEST_F(RealServiceTest, HearsOfAChangeAlsoAfterTheServiceWasKilled) {
    Serve();
    moxcore::filesupport::commondirs::SetUserRoot(directory.Text());
    quilloauth::jwt::InitializeAuthManager("test", "", {}, "");
    auto const datastore = quillo::ServiceDatastore::Create();
    auto const user = datastore->GetCurrentUser();
    ASSERT_FALSE(user.Get()->GetName().empty());
    auto const folder = moxcore::utility::Guid(FirstProject().rootAsset.id->AsString());
    auto const list = datastore->GetAssetList(folder).Get();
    auto const before = list->GetCount();

    MessageCount heard(datastore->GetStationID());
    auto const token = auth->GetAccessToken().Get();
    for (std::size_t added = 1; added <= 2; ++added) {
        auto const answer = Transport::Get()->Send(
            {.method = "POST",
             .url = service->Address() + "/v1/folders/" + folder.AsStdString() + "/children",
             .headers = {{"Authorization", "Bearer " + token}},
             .body = std::make_shared<std::string const>(R"({"name":"Added"})")});
        ASSERT_EQ(answer.Get()->status, 201);
        heard.WaitFor(added);
        EXPECT_EQ(list->GetCount(), before + added);
        if (added == 2) break;
        service->Kill();
        service->Restart();
    }
    datastore->SignOutJwt();
    datastore->SignOutOAuth2();
}

TEST_F(RealServiceTest, ResumesACutUpload) {
    Serve({"--drop-upload-after", std::to_string(13 * kMegabytes)});
    ExpectPublished(Upload(30 * kMegabytes));
}

TEST_F(RealServiceTest, ResumesOnceAServiceThatWasKilledIsBack) {
    Serve();
    std::atomic<bool> killed = false;
    ExpectPublished(Upload(30 * kMegabytes, [&](std::uint64_t done, std::uint64_t) {
        if (done < 12 * kMegabytes || killed.exchange(true)) return;
        service->Kill();
        service->Restart();
    }));
    EXPECT_TRUE(killed);
}

TEST_F(RealServiceTest, GetsThroughToAServiceThatFailsOften) {
    Serve();
    auto const project = FirstProject();
    service->Kill();
    service->Restart({"--fail", "0.3"});
    for (int i = 0; i < 20; ++i)
        EXPECT_TRUE(client->GetAccounts().GetCurrentUser({}).Get()->IsSuccessful());
    UploadRequest const request(
        *project.rootAsset.id,
        directory.Write("movie.mp4", std::string(20 * kMegabytes, 'm')).string(), {});
    quillocommon::Guid id;
    ExpectPublished(client->GetTransferManager().Upload(request, id));
}

TEST_F(RealServiceTest, ReplacesATokenThatTheServiceRejects) {
    Serve();
    ASSERT_TRUE(client->UpdateAccessToken("made-up-by-the-test").IsSuccess());
    EXPECT_TRUE(client->GetAccounts().GetCurrentUser({}).Get()->IsSuccessful());

    ASSERT_TRUE(auth->Logout().IsSuccess());
    EXPECT_FALSE(auth->Login().IsSuccess());
    ASSERT_TRUE(client->UpdateAccessToken(auth->GetAccessToken().Get()).IsSuccess());
    EXPECT_TRUE(client->GetAccounts().GetCurrentUser({}).Get()->IsSuccessful());
}

TEST_F(RealServiceTest, AServiceThatIsNotThereIsToldAsSuch) {
    Serve();
    service->Kill();
    auto const children = client->GetAssets().GetChildAssets(
        GetChildAssetsRequest(quillocommon::Guid::CreateUnique()));
    children.Wait();
    EXPECT_EQ(ExtractResultFromException(children.GetException()), kNoConnection);
    EXPECT_THAT(failures.All().at(0).message, testing::HasSubstr("check the network connection"));
}

}  // namespace
