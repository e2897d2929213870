#include "quillomoxui/model/Backends.h"

#include <gtest/gtest.h>

#include <optional>

#include "moxcore/config/Error.h"
#include "moxcore/debug/DebugDatabase.h"
#include "quilloclient/QuilloDatastore.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/client/ClientBackend.h"
#include "quillomoxui/model/sdk/SdkBackend.h"
#include "tests/quillomoxui/SignedIn.h"

namespace quillomoxui {
namespace {

using model::Backend;

constexpr char kSwitch[] = "QuilloNative.UseQuilloCppSdk";

TEST(Backends, TheSwitchChoosesAtEachCall) {
    auto& switches = moxcore::debug::DebugDatabase::Instance();
    Backend const& sdk = model::SdkBackend::Instance();
    Backend const& client = model::ClientBackend::Instance();
    struct {
        std::optional<bool> usesSdk;
        Backend const* chosen;
    } const cases[] = {{std::nullopt, &sdk}, {false, &client}, {true, &sdk}};
    for (auto const& one : cases) {
        if (one.usesSdk) switches.SetEntry(kSwitch, *one.usesSdk);
        EXPECT_EQ(&model::ChosenBackend(), one.chosen);
    }
    switches.RemoveEntry(kSwitch);
}

/// A client library that must not be used.
class UntouchedDatastore final : public quillo::QuilloDatastore {
public:
    void SignIn() override { ADD_FAILURE(); }
    Result<quillo::QuilloUser> GetCurrentUser() override { return Refuse<quillo::QuilloUser>(); }
    Result<quillo::QuilloAccountList> GetAccountList() override {
        return Refuse<quillo::QuilloAccountList>();
    }
    Result<quillo::QuilloTeamList> GetTeamList(Guid const&) override {
        return Refuse<quillo::QuilloTeamList>();
    }
    Result<quillo::QuilloProjectList> GetProjectList(Guid const&) override {
        return Refuse<quillo::QuilloProjectList>();
    }
    Result<quillo::QuilloAssetList> GetAssetList(Guid const&) override {
        return Refuse<quillo::QuilloAssetList>();
    }
    ImmutableString GetStationID() const override {
        ADD_FAILURE();
        return {};
    }
    void SignOutJwt() override { ADD_FAILURE(); }
    void SignOutOAuth2() override { ADD_FAILURE(); }

private:
    template <class T>
    static Result<T> Refuse() {
        ADD_FAILURE();
        return Result<T>::CreateFailed(moxcore::config::kUnknownFailure, "untouched", nullptr);
    }
};

using BackendsTest = ServiceTest;

TEST_F(BackendsTest, TheSdkNeedsNoClientLibrary) {
    ServeTree();
    quillo::QuilloDatastore::SetDatastore(std::make_shared<UntouchedDatastore>());
    auto const& backend = model::ChosenBackend();
    EXPECT_TRUE(backend.HasSignInStep());
    ASSERT_TRUE(SignIn());
    std::shared_ptr<QuilloUser> user;
    backend.GetCurrentUser([&](auto const& received) { user = received; });
    ASSERT_TRUE(user);
    user->FetchChildren();
    executor.RunDue();
    auto const accounts = user->GetChildNodes();
    ASSERT_EQ(accounts.size(), 1u);
    backend.FetchFirst(accounts);
    backend.CancelSignIn();
    backend.SignOut();
    EXPECT_FALSE(model::SdkBackend::GetClient());
    quillo::QuilloDatastore::SetDatastore(nullptr);
}

}  // namespace
}  // namespace quillomoxui
