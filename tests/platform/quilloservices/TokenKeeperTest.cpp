#include "quilloauth/TokenKeeper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <map>

#include "moxcore/config/Error.h"
#include "quilloauth/AuthManager.h"
#include "quilloauth/AuthSession.h"
#include "tests/support/FailureLog.h"
#include "tests/support/ManualExecutor.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace std::chrono_literals;
using quilloauth::AuthSession;
using quilloauth::FileTokenStore;
using quilloauth::Tokens;
using quilloauth::TokenStoreFailure;

constexpr auto* kAddress = testsupport::ScriptedTransport::kAddress;

/// The user's keyring, which outlives what asks it.
struct Keyring {
    std::mutex mutex;
    std::map<std::string, Tokens> tokens;             // guarded by mutex
    std::optional<TokenStoreFailure> failure;         // guarded by mutex
    std::optional<std::shared_future<void>> waitFor;  // guarded by mutex; each call does
    int calls = 0;                                    // guarded by mutex
    std::promise<void> called;                        // by the first call that waits
};

class FakeKeyringStore final : public quilloauth::TokenStore {
public:
    explicit FakeKeyringStore(std::shared_ptr<Keyring> keyring) : keyring(std::move(keyring)) {}

    std::optional<Tokens> Load(std::string const& address) override {
        auto const lock = Begin();
        auto const found = keyring->tokens.find(address);
        return found == keyring->tokens.end() ? std::nullopt : std::optional(found->second);
    }
    void Save(std::string const& address, Tokens const& tokens) override {
        auto const lock = Begin();
        keyring->tokens.insert_or_assign(address, tokens);
    }
    void Forget(std::string const& address) override {
        auto const lock = Begin();
        keyring->tokens.erase(address);
    }

private:
    std::unique_lock<std::mutex> Begin() {
        std::unique_lock lock(keyring->mutex);
        ++keyring->calls;
        if (auto const gate = std::exchange(keyring->waitFor, {})) {
            lock.unlock();
            keyring->called.set_value();
            gate->wait();
            lock.lock();
        }
        if (keyring->failure) throw TokenStoreFailure(*keyring->failure);
        return lock;
    }

    std::shared_ptr<Keyring> const keyring;
};

class TokenKeeperTest : public testing::Test {
protected:
    TokenKeeperTest() {
        transport.SetResponder([](auto const& request) {
            bool const isRevocation = request.url.ends_with("/revoke");
            return quillosdk::HttpResponse{
                200,
                {},
                isRevocation
                    ? ""
                    : R"({"access_token":"a-token-that-is-new","token_type":"Bearer","expires_in":3600,)"
                      R"("refresh_token":"r-token-that-is-new"})"};
        });
    }
    ~TokenKeeperTest() override { session->Stop(); }

    std::shared_ptr<AuthSession> NewSession() {
        return std::make_shared<AuthSession>("the editor", "http://127.0.0.1/", path,
                                             std::make_unique<FakeKeyringStore>(keyring));
    }

    /// As when the application is started anew.
    void Restart() {
        session->Stop();
        session = NewSession();
    }

    /// The token that the session gives; empty without one.
    std::string Token() {
        auto const token = session->GetAccessToken();
        token.Wait();
        return token.GetException() ? "" : token.Get();
    }

    Tokens Old() const {
        return {"a-token-that-is-old", "r-token-that-is-old", moxcore::threads::Now() + 1h};
    }

    testsupport::ManualExecutor executor;
    testsupport::ScriptedTransport transport;
    testsupport::FailureLog failures;
    testsupport::TemporaryDirectory directory;
    std::string const path = (directory.Path() / "tokens.json").string();
    FileTokenStore file{path};
    std::shared_ptr<Keyring> const keyring = std::make_shared<Keyring>();
    std::shared_ptr<AuthSession> session = NewSession();
};

TEST_F(TokenKeeperTest, ASignInGoesToTheKeyringAloneAndIsThereAtTheNextStart) {
    ASSERT_EQ(session->Login().GetResult(), quilloauth::jwt::kSessionExists);
    EXPECT_EQ(Token(), "a-token-that-is-new");
    Restart();
    EXPECT_EQ(Token(), "a-token-that-is-new");
    EXPECT_FALSE(file.Load(kAddress));
    keyring->tokens.at(kAddress).access = "a-of-another-process";
    EXPECT_EQ(Token(), "a-of-another-process");
    EXPECT_TRUE(failures.All().empty());
}

TEST_F(TokenKeeperTest, TheEndWaitsForWhatTheKeyringHasNotBeenToldYet) {
    std::promise<void> gate;
    keyring->waitFor = gate.get_future().share();
    auto const token = session->GetAccessToken();  // the worker is with the keyring
    keyring->called.get_future().wait();
    ASSERT_EQ(session->Login().GetResult(), quilloauth::jwt::kSessionExists);
    auto const behind = session->GetAccessToken();
    auto const ended = std::async(std::launch::async, [this] { session->Stop(); });
    behind.Wait();  // dropped: the end has begun
    gate.set_value();
    ended.wait();
    EXPECT_EQ(keyring->tokens.at(kAddress).access, "a-token-that-is-new");
}

TEST_F(TokenKeeperTest, WhatIsInTheFileMovesOverOnceTheKeyringHasIt) {
    struct Row {
        char const* failure;  // null: none
        bool isAbsent;
        char const* says;  // null: nothing
    };
    for (auto const& row :
         {Row{"it is locked", false, "(it is locked)"},
          Row{"the name is not activatable", true, nullptr}, Row{nullptr, false, nullptr}}) {
        SCOPED_TRACE(row.failure ? row.failure : "no failure");
        auto const told = failures.All().size();
        keyring->failure.reset();
        if (row.failure) keyring->failure.emplace(row.failure, row.isAbsent);
        keyring->calls = 0;
        file.Save(kAddress, Old());
        keyring->tokens[kAddress] = {"a-token-that-is-older", "r-token-that-is-older",
                                     Old().expiry};
        Restart();
        EXPECT_EQ(Token(), "a-token-that-is-old");
        EXPECT_EQ(Token(), "a-token-that-is-old");
        EXPECT_EQ(file.Load(kAddress).has_value(), row.failure != nullptr);
        EXPECT_EQ(keyring->tokens[kAddress].access,
                  row.failure ? "a-token-that-is-older" : "a-token-that-is-old");
        EXPECT_TRUE(!row.failure || keyring->calls == 1) << "it is not asked again";
        ASSERT_EQ(failures.All().size(), told + (row.says ? 1 : 0));
        if (!row.says) continue;
        EXPECT_EQ(failures.All().back().step, quillocommon::Step::KeepSignIn);
        EXPECT_THAT(failures.All().back().message, testing::HasSubstr(row.says));
    }
}

TEST_F(TokenKeeperTest, ASignInThatTheKeyringDoesNotTakeGoesToTheFile) {
    keyring->failure.emplace("it did not answer");
    ASSERT_EQ(session->Login().GetResult(), quilloauth::jwt::kSessionExists);
    EXPECT_EQ(Token(), "a-token-that-is-new");
    EXPECT_EQ(file.Load(kAddress)->refresh, "r-token-that-is-new");
    EXPECT_EQ(failures.All().size(), 1u);
}

TEST_F(TokenKeeperTest, ASignOutDoesNotWaitForTheKeyringAndEndsWhatItHolds) {
    keyring->tokens[kAddress] = Old();
    std::promise<void> gate;
    keyring->waitFor = gate.get_future().share();
    auto const before = session->GetAccessToken();
    keyring->called.get_future().wait();
    EXPECT_TRUE(session->Logout().IsSuccess());  // on this thread, while the keyring is silent
    EXPECT_TRUE(file.IsMarkedSignedOut(kAddress));
    auto const after = session->GetAccessToken();
    gate.set_value();
    session->AwaitForgetting(1h);
    EXPECT_TRUE(keyring->tokens.empty());
    EXPECT_FALSE(file.IsMarkedSignedOut(kAddress));
    transport.WaitForCount(1);
    EXPECT_EQ(*transport.At(0).body, "token=r-token-that-is-old");
    after.Wait();
    EXPECT_EQ(moxcore::config::ExtractResultFromException(after.GetException()),
              quilloauth::jwt::kNotSignedIn);
}

TEST_F(TokenKeeperTest, ASignOutOfALockedKeyringIsCarriedOutAtTheNextStart) {
    keyring->tokens[kAddress] = Old();
    keyring->failure.emplace("it is locked");
    EXPECT_TRUE(session->Logout().IsSuccess());
    EXPECT_EQ(Token(), "");
    Restart();
    EXPECT_EQ(Token(), "");
    keyring->failure.reset();
    Restart();
    EXPECT_EQ(Token(), "");
    EXPECT_EQ(*transport.At(0).body, "token=r-token-that-is-old");
    EXPECT_TRUE(keyring->tokens.empty());
    EXPECT_FALSE(file.IsMarkedSignedOut(kAddress));
}

}  // namespace
