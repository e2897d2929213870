#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <future>

#include "moxcore/config/Error.h"
#include "quilloauth/AuthManager.h"
#include "quilloauth/AuthSession.h"
#include "quilloauth/FileTokenStore.h"
#include "quillocommon/ServiceAddress.h"
#include "quillosdk/RetryPolicy.h"
#include "tests/support/FailureLog.h"
#include "tests/support/ManualExecutor.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/SignInStages.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/UserDirectories.h"

namespace {

using namespace std::chrono_literals;
using moxcore::config::ExtractResultFromException;
using quilloauth::AuthSession;
using quilloauth::FileTokenStore;
using quilloauth::SignInStage;
using quilloauth::Tokens;
using quilloauth::jwt::kNotSignedIn;
using quilloauth::jwt::kSessionExists;
using quilloauth::jwt::kSessionOver;
using testing::HasSubstr;

class AuthTest : public testing::Test {
protected:
    AuthTest() {
        quillosdk::RetryPolicy::SetRandomSource([] { return 0.0; });
    }
    ~AuthTest() override {
        session->Stop();
        quillosdk::RetryPolicy::SetRandomSource({});
        for (auto const& failure : failures.All()) {
            EXPECT_TRUE(failure.step == quillocommon::Step::SignIn || IsWarning(failure.step));
            EXPECT_THAT(failure.message, testing::Not(HasSubstr("secret")));
        }
    }

    static std::string Granted(int number, std::string const& expiresIn = "3600") {
        auto const text = std::to_string(number);
        return R"({"access_token":"secret-access-a)" + text +
               R"(","token_type":"Bearer","expires_in":)" + expiresIn +
               R"(,"refresh_token":"secret-refresh-r)" + text + R"("})";
    }

    /// Signs in with tokens number 1, which last for `expiresIn` seconds.
    void SignIn(int expiresIn = 3600) {
        transport.SetResponder([&](auto const&) {
            return quillosdk::HttpResponse{200, {}, Granted(1, std::to_string(expiresIn))};
        });
        ASSERT_EQ(session->Login().GetResult(), kSessionExists);
        transport.SetResponder({});
    }

    [[nodiscard]] std::string FormAt(std::size_t index) const { return *transport.At(index).body; }

    testsupport::ManualExecutor executor;
    testsupport::ScriptedTransport transport;
    testsupport::FailureLog failures;
    testsupport::SignInStages stages;
    testsupport::TemporaryDirectory directory;
    std::string const path = (directory.Path() / "tokens.json").string();
    FileTokenStore store{path};  // of another process
    std::shared_ptr<AuthSession> session =
        std::make_shared<AuthSession>("the editor", "http://127.0.0.1/back", path);
};

TEST_F(AuthTest, WithoutASessionThereIsNoTokenAndNothingIsAskedFor) {
    auto const token = session->GetAccessToken();
    token.Wait();
    EXPECT_EQ(ExtractResultFromException(token.GetException()), kNotSignedIn);
    EXPECT_EQ(transport.Count(), 0u);
    EXPECT_TRUE(failures.All().empty());
}

TEST_F(AuthTest, SignsTheLocalUserInFromTheThreadThatToldThatNobodyIs) {
    transport.SetResponder([&](auto const&) {
        return quillosdk::HttpResponse{200, {}, Granted(1)};
    });
    auto const nobody = session->GetAccessToken();
    auto const result = nobody.Then(nobody.GetExecutor(), [this](auto const& token) {
        EXPECT_TRUE(token.GetException());
        EXPECT_EQ(session->Login().GetResult(), kSessionExists);
        return session->GetAccessToken();
    });
    EXPECT_EQ(result.Get().Get(), "secret-access-a1");
    EXPECT_EQ(transport.LineAt(0), "POST /oauth/token");
    EXPECT_EQ(FormAt(0),
              "client_id=the%20editor&grant_type=urn%3Aquillo%3Agrant-type%3Alocal-user");
    EXPECT_EQ(transport.HeaderAt(0, "Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(transport.Count(), 1u);
}

TEST_F(AuthTest, ProvesThatItIsTheLocalServicesUserWithTheSecretThatIsGood) {
    testsupport::UserDirectories const user(directory.Path());
    user.WriteSecret(user.Runtime(), "8080", "127.0.0.1", "stale-secret");
    user.WriteSecret(user.Cache(), "8080", "127.0.0.1", "good-secret");
    auto const before = quillocommon::GetServiceAddress();
    ASSERT_TRUE(quillocommon::SetServiceAddress("http://127.0.0.1:8080"));
    transport.SetResponder([&](auto const& request) {
        return request.body->ends_with("&local_user_secret=good-secret")
                   ? quillosdk::HttpResponse{200, {}, Granted(1)}
                   : quillosdk::HttpResponse{400, {}, R"({"error":"unauthorized_client"})"};
    });
    // With an address to which no browser comes back.
    auto const local = std::make_shared<AuthSession>("the editor", "none", path);
    EXPECT_EQ(local->Login().GetResult(), kSessionExists);
    EXPECT_EQ(transport.Count(), 2u);
    ASSERT_TRUE(quillocommon::SetServiceAddress(before));
}

/// Runs all at once: Login waits, so nobody else could let time pass.
class ImpatientExecutor : public moxcore::threads::AsyncExecutor {
public:
    void CallAsync(std::function<void()> function) override { function(); }
    void CallAsyncDelayed(std::function<void()> function, std::uint32_t) override { function(); }
};

TEST_F(AuthTest, ASignInThatFailsSaysWhy) {
    moxcore::threads::SetIOBoundExecutor(std::make_shared<ImpatientExecutor>());
    struct Row {
        int status;  // 0: no connection, each time
        char const* body;
        std::int32_t result;
        std::size_t requests;
        char const* says;
        SignInStage stage;
    };
    constexpr Row kRows[] = {
        {400, R"({"error":"invalid_request","error_description":"Which?"})", kNotSignedIn, 1,
         "400 (Which?)", SignInStage::Refused},
        {200, R"({"access_token":"secret-access-a"})", quillosdk::kMalformedAnswer, 1,
         "no refresh_token", SignInStage::Refused},
        {200,
         R"({"access_token":"secret-access-token","refresh_token":"secret-fifteen-","expires_in":9})",
         quillosdk::kMalformedAnswer, 1, "its refresh_token is no token of 16",
         SignInStage::Refused},
        {503, "", kNotSignedIn, 5, "try again later", SignInStage::Unavailable},
        {0, "", quillosdk::kNoConnection, 5, "check the network connection",
         SignInStage::Unavailable},
    };
    for (auto const& row : kRows) {
        SCOPED_TRACE(row.says);
        auto const first = transport.Count();
        transport.SetResponder([&](auto const&) {
            if (row.status == 0)
                throw moxcore::config::ResultException(quillosdk::kNoConnection, "refused");
            return quillosdk::HttpResponse{row.status, {}, row.body};
        });
        EXPECT_EQ(session->Login().GetResult(), row.result);
        EXPECT_EQ(transport.Count(), first + row.requests);
        EXPECT_THAT(failures.All().back().message, HasSubstr(row.says));
        EXPECT_EQ(failures.All().back().httpStatus, row.status == 200 ? 0 : row.status);
        EXPECT_EQ(stages.All().back(), row.stage);
    }
    EXPECT_EQ(failures.All().size(), std::size(kRows));
}

TEST_F(AuthTest, ASignInThatTheServiceLimitsGoesOnWhenItMay) {
    transport.SetResponder([&](auto const&) {
        return transport.Count() == 1 ? quillosdk::HttpResponse{429,
                                                                {{"RETRY-AFTER", "7"}},
                                                                R"({"error":"rate_limited"})"}
                                      : quillosdk::HttpResponse{200, {}, Granted(1)};
    });
    auto login = std::async(std::launch::async, [&] { return session->Login().GetResult(); });
    executor.RunUntil([&] { return executor.Waiting() == std::vector{7000ms}; });
    EXPECT_THAT(stages.All(), testing::ElementsAre(SignInStage::Waiting));
    executor.AdvanceBy(7s);
    EXPECT_EQ(login.get(), kSessionExists);
    EXPECT_TRUE(failures.All().empty());
    EXPECT_EQ(stages.All().back(), SignInStage::Asking);
}

TEST_F(AuthTest, ASignInThatIsCalledOffWhileItWaitsForTheServiceLeavesNothingBehind) {
    transport.SetResponder({});
    for (bool const isAnswered : {false, true}) {
        auto const first = transport.Count();
        auto login = std::async(std::launch::async, [&] { return session->Login().GetResult(); });
        transport.WaitForCount(first + 1);
        session->CancelLogin();
        EXPECT_EQ(login.get(), kNotSignedIn);
        // What comes of the request now is nobody's: the tokens go back, and it is not repeated.
        if (isAnswered)
            transport.Answer(first, 200, Granted(1));
        else
            transport.Answer(first, 503, "", {{"RETRY-AFTER", "7"}});
        executor.AdvanceBy(1min);
        ASSERT_EQ(transport.Count(), first + 1 + isAnswered);
        EXPECT_TRUE(!isAnswered || transport.LineAt(first + 1) == "POST /oauth/revoke");
    }
    auto const token = session->GetAccessToken();
    token.Wait();
    EXPECT_EQ(ExtractResultFromException(token.GetException()), kNotSignedIn);
    EXPECT_TRUE(failures.All().empty());
    EXPECT_TRUE(stages.All().empty());
}

TEST_F(AuthTest, ATokenIsRenewedOnceItIsNearItsEndOrRejected) {
    struct Row {
        int expiresIn;
        bool rejected;
        bool renewed;
    };
    constexpr Row kRows[] = {{61, false, false},
                             {60, false, true},
                             {1, false, true},
                             {3600, false, false},
                             {3600, true, true}};
    for (auto const& row : kRows) {
        SCOPED_TRACE(row.expiresIn);
        SignIn(row.expiresIn);
        auto const before = transport.Count();
        if (row.rejected) session->OnTokenRejected("secret-access-a1");
        auto const first = session->GetAccessToken();
        auto const second = session->GetAccessToken();
        if (!row.renewed) {
            EXPECT_EQ(second.Get(), "secret-access-a1");
            EXPECT_EQ(transport.Count(), before);
            continue;
        }
        transport.WaitForCount(before + 1);
        EXPECT_EQ(
            FormAt(before),
            "client_id=the%20editor&grant_type=refresh_token&refresh_token=secret-refresh-r1");
        transport.Answer(before, 200, Granted(2));
        EXPECT_EQ(first.Get(), "secret-access-a2");
        EXPECT_EQ(second.Get(), "secret-access-a2");
        EXPECT_EQ(store.Load(testsupport::ScriptedTransport::kAddress)->refresh,
                  "secret-refresh-r2");
        EXPECT_EQ(session->GetAccessToken().Get(), "secret-access-a2");
        EXPECT_EQ(transport.Count(), before + 1) << "one renewal for both";
    }
}

TEST_F(AuthTest, ProcessesThatShareTokensRenewThemOnce) {
    SignIn(30);
    auto const before = transport.Count();
    auto const other = std::make_shared<AuthSession>("the editor", "http://127.0.0.1/back", path);
    auto const first = session->GetAccessToken();
    transport.WaitForCount(before + 1);
    auto const second = other->GetAccessToken();
    auto const hasGoneOn = [&] {
        return !executor.Waiting().empty() || transport.Count() > before + 1;
    };
    executor.RunUntil(hasGoneOn);
    executor.AdvanceBy(100ms);
    executor.RunUntil(hasGoneOn);
    ASSERT_EQ(transport.Count(), before + 1);
    transport.Answer(before, 200, Granted(2));
    EXPECT_EQ(first.Get(), "secret-access-a2");
    // The turn ends a moment after the token is there; until then the other one tries again.
    while (!second.IsComplete()) {
        executor.RunUntil([&] { return !executor.Waiting().empty() || second.IsComplete(); });
        executor.AdvanceBy(100ms);
    }
    EXPECT_EQ(second.Get(), "secret-access-a2");
    EXPECT_EQ(transport.Count(), before + 1);
    other->Stop();
}

TEST_F(AuthTest, ARenewalThatFailsCostsTheSessionOnlyWhenTheServiceHasEndedIt) {
    struct Row {
        int expiresIn;
        char const* error;
        std::int32_t result;  // 0: the old token is still given
        bool stillSignedIn;
    };
    constexpr Row kRows[] = {
        {30, "invalid_client", 0, true},
        {30, "invalid_grant", kSessionOver, false},
        {-1, "invalid_client", quillosdk::kRefused, true},
        {-1, "invalid_grant", kSessionOver, false},
    };
    std::size_t told = 0;
    for (auto const& row : kRows) {
        SCOPED_TRACE(row.error);
        SignIn(std::max(row.expiresIn, 1));
        if (row.expiresIn < 0) executor.AdvanceBy(2s);
        auto const before = transport.Count();
        auto const token = session->GetAccessToken();
        transport.WaitForCount(before + 1);
        transport.Answer(before, 400, std::string(R"({"error":")") + row.error + "\"}");
        token.Wait();
        EXPECT_EQ(ExtractResultFromException(token.GetException()), row.result);
        EXPECT_EQ(store.Load(testsupport::ScriptedTransport::kAddress).has_value(),
                  row.stillSignedIn);
        told += row.result == 0 ? 0 : 1;
        EXPECT_EQ(failures.All().size(), told);
    }
}

TEST_F(AuthTest, ATokenThatLastsForEverIsKept) {
    for (char const* expiresIn : {"9223372036854775807", "99999999999999999999 "}) {
        transport.SetResponder([&](auto const&) {
            return quillosdk::HttpResponse{200, {}, Granted(1, expiresIn)};
        });
        EXPECT_EQ(session->Login().GetResult(), kSessionExists);
        auto const before = transport.Count();
        EXPECT_EQ(session->GetAccessToken().Get(), "secret-access-a1");
        EXPECT_EQ(transport.Count(), before) << "there is nothing to renew";
    }
}

TEST_F(AuthTest, WhatARefusalRepeatsOfTheRefreshTokenIsNotTold) {
    for (int const status : {302, 400}) {
        SignIn(1);
        executor.AdvanceBy(2s);
        auto const before = transport.Count();
        auto const token = session->GetAccessToken();
        transport.WaitForCount(before + 1);
        transport.Answer(
            before, status,
            R"({"error":"invalid_grant","error_description":"No secret-refresh-r1, no )"
            R"(secret%2Drefresh%2Dr1, no secret\u002drefresh\u002Dr1."})");
        token.Wait();
        EXPECT_THAT(failures.All().back().message, HasSubstr("(No ..., no ..., no ....)"));
    }
}

TEST_F(AuthTest, TokensThatAnotherProcessHasRenewedAreTaken) {
    SignIn(30);
    auto const token = session->GetAccessToken();
    transport.WaitForCount(2);
    Tokens const renewed{"secret-access-a9", "secret-refresh-r9", moxcore::threads::Now() + 1h};
    store.Save(testsupport::ScriptedTransport::kAddress, renewed);
    transport.Answer(1, 400, R"({"error":"invalid_grant"})");
    EXPECT_EQ(token.Get(), "secret-access-a9");
}

TEST_F(AuthTest, SigningOutForgetsAtOnceAlsoWhatARenewalBringsLater) {
    SignIn(30);
    auto const token = session->GetAccessToken();
    transport.WaitForCount(2);
    EXPECT_TRUE(session->Logout().IsSuccess());
    EXPECT_FALSE(store.Load(testsupport::ScriptedTransport::kAddress));
    EXPECT_EQ(transport.LineAt(2), "POST /oauth/revoke");
    EXPECT_EQ(FormAt(2), "token=secret-refresh-r1");

    transport.Answer(1, 200, Granted(2));
    token.Wait();
    EXPECT_EQ(ExtractResultFromException(token.GetException()), kNotSignedIn);
    EXPECT_FALSE(store.Load(testsupport::ScriptedTransport::kAddress));
    transport.WaitForCount(4);
    EXPECT_EQ(FormAt(3), "token=secret-refresh-r2");
    EXPECT_TRUE(session->Logout().IsSuccess()) << "there is nothing left to end";
    EXPECT_EQ(transport.Count(), 4u);
}

TEST_F(AuthTest, TokensThatCannotBeKeptLastAsLongAsTheSession) {
    session->Stop();
    session = std::make_shared<AuthSession>("the editor", "http://127.0.0.1/back",
                                            (directory.Path() / "missing" / "tokens").string());
    SignIn();
    EXPECT_EQ(session->GetAccessToken().Get(), "secret-access-a1");
    ASSERT_EQ(failures.All().size(), 1u);
    EXPECT_TRUE(IsWarning(failures.All()[0].step));
    EXPECT_THAT(failures.All()[0].message, HasSubstr("for the next start"));
    EXPECT_TRUE(session->Logout().IsSuccess());
    auto const token = session->GetAccessToken();
    token.Wait();
    EXPECT_EQ(ExtractResultFromException(token.GetException()), kNotSignedIn);
}

TEST_F(AuthTest, TheEndCancelsWhatWaits) {
    SignIn(30);
    auto const login = session->GetAccessToken().Then(
        [this](auto const&) { return session->Login().GetResult(); });
    transport.WaitForCount(2);
    transport.Answer(1, 200, Granted(2));
    transport.WaitForCount(3);  // the worker waits in Login for an answer that does not come
    auto const behind = session->GetAccessToken();
    session->Stop();
    EXPECT_EQ(login.Get(), kNotSignedIn);
    EXPECT_THROW(static_cast<void>(behind.Get()), moxcore::async::CancelledException);
    EXPECT_THROW(static_cast<void>(session->GetAccessToken().Get()),
                 moxcore::async::CancelledException);
}

}  // namespace
