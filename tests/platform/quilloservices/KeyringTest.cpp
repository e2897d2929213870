// Run by keyring_session, which gives each group of them a D-Bus session of its own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libsecret/secret.h>

#include <cstdlib>

#include "quilloauth/AuthManager.h"
#include "quilloauth/AuthSession.h"
#include "quilloauth/FileTokenStore.h"
#include "quilloauth/KeyringTokenStore.h"
#include "tests/support/FailureLog.h"
#include "tests/support/ManualExecutor.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace std::chrono_literals;
using quilloauth::KeyringTokenStore;
using quilloauth::Tokens;
using quilloauth::TokenStoreFailure;
using testing::HasSubstr;

constexpr char kService[] = "https://a.test";
Tokens const kTokens{"access-token-of-1", "refresh-token-of-1", moxcore::threads::TimePoint(5000s)};
Tokens const kOthers{"access-token-of-2", "refresh-token-of-2", moxcore::threads::TimePoint(6000s)};

/// What a call fails with.
template <class Call>
std::optional<TokenStoreFailure> FailureOf(Call call) {
    try {
        static_cast<void>(call());
        return std::nullopt;
    } catch (TokenStoreFailure const& failure) {
        return failure;
    }
}

class KeyringTest : public testing::Test {
protected:
    /// The keyring of the developer who runs this is not to be touched.
    void SetUp() override {
        if (!std::getenv("QUILLO_TEST_KEYRING"))  // NOLINT(concurrency-mt-unsafe)
            FAIL() << "there is no session of its own; run keyring_session";
    }
};

using RealKeyring = KeyringTest;

TEST_F(RealKeyring, KeepsOnePairForEachServiceAndApplication) {
    auto const store = KeyringTokenStore::Create("editor");
    auto const anotherApplication = KeyringTokenStore::Create("another editor");
    EXPECT_FALSE(store->Load(kService));
    store->Save(kService, kOthers);
    store->Save(kService, kTokens);
    store->Save("https://b.test", kOthers);
    EXPECT_EQ(store->Load(kService), kTokens);
    EXPECT_EQ(KeyringTokenStore::Create("editor")->Load("https://b.test"), kOthers);
    EXPECT_FALSE(anotherApplication->Load(kService));
    anotherApplication->Forget(kService);
    store->Forget("https://b.test");
    EXPECT_EQ(store->Load(kService), kTokens);
    store->Forget(kService);
    EXPECT_FALSE(store->Load(kService));
    EXPECT_FALSE(store->Load("https://b.test"));
}

TEST_F(RealKeyring, TakesASessionOverFromTheFileAndForgetsItWithTheSignOut) {
    testsupport::ManualExecutor executor;
    testsupport::ScriptedTransport transport;
    testsupport::FailureLog failures;
    testsupport::TemporaryDirectory directory;
    auto const path = (directory.Path() / "tokens.json").string();
    auto const store = KeyringTokenStore::Create("editor");
    quilloauth::FileTokenStore file(path);
    constexpr auto* kAddress = testsupport::ScriptedTransport::kAddress;
    file.Save(kAddress, {"access-of-a-test", "refresh-of-a-test", moxcore::threads::Now() + 1h});

    auto const session = std::make_shared<quilloauth::AuthSession>(
        "editor", "http://127.0.0.1/", path, KeyringTokenStore::Create("editor"));
    EXPECT_EQ(session->GetAccessToken().Get(), "access-of-a-test");
    EXPECT_FALSE(file.Load(kAddress));
    EXPECT_EQ(store->Load(kAddress)->refresh, "refresh-of-a-test");
    EXPECT_EQ(session->GetAccessToken().Get(), "access-of-a-test");

    EXPECT_TRUE(session->Logout().IsSuccess());
    session->Stop();
    EXPECT_FALSE(store->Load(kAddress));
    EXPECT_EQ(*transport.At(0).body, "token=refresh-of-a-test");
    EXPECT_TRUE(failures.All().empty());
}

/// The last of them: a keyring that is locked stays so.
TEST_F(RealKeyring, ThatIsLockedIsAFailureAndAsksNobody) {
    auto const store = KeyringTokenStore::Create("editor");
    store->Save(kService, kTokens);
    auto* const service = secret_service_get_sync(SECRET_SERVICE_NONE, nullptr, nullptr);
    auto* const collection = secret_collection_for_alias_sync(
        service, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, nullptr);
    GList list{collection, nullptr, nullptr};
    ASSERT_EQ(secret_service_lock_sync(service, &list, nullptr, nullptr, nullptr), 1);
    g_object_unref(collection);
    g_object_unref(service);

    for (auto const& failure : {FailureOf([&] { return store->Load(kService); }),
                                FailureOf([&] { return store->Save(kService, kOthers), 0; }),
                                FailureOf([&] { return store->Forget(kService), 0; })}) {
        ASSERT_TRUE(failure);
        EXPECT_THAT(failure->what(), HasSubstr("it is locked"));
        EXPECT_FALSE(failure->isAbsent);
    }
}

using SilentKeyring = KeyringTest;

TEST_F(SilentKeyring, IsGivenUpAfterAWhile) {
    auto* const address = g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    auto* const bus = g_dbus_connection_new_for_address_sync(
        address,
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    ASSERT_TRUE(bus);
    auto const swallowCalls = [](GDBusConnection*, GDBusMessage* message, gboolean isIncoming,
                                 gpointer) -> GDBusMessage* {
        if (!isIncoming ||
            g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
            return message;
        g_object_unref(message);
        return nullptr;
    };
    g_dbus_connection_add_filter(bus, swallowCalls, nullptr, nullptr);
    g_variant_unref(g_dbus_connection_call_sync(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
        g_variant_new("(su)", "org.freedesktop.secrets", 4), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
        nullptr, nullptr));

    auto const store = KeyringTokenStore::Create("editor", 100ms);
    auto const failure = FailureOf([&] { return store->Load(kService); });
    ASSERT_TRUE(failure);
    EXPECT_THAT(failure->what(), HasSubstr("did not answer within 100 ms"));
    EXPECT_FALSE(failure->isAbsent);
    g_object_unref(bus);
    g_free(address);
}

using AbsentKeyring = KeyringTest;

TEST_F(AbsentKeyring, IsNoneAndNotABrokenOne) {
    auto const store = KeyringTokenStore::Create("editor");
    auto const missing = FailureOf([&] { return store->Load(kService); });
    ASSERT_TRUE(missing);
    EXPECT_TRUE(missing->isAbsent) << missing->what();

    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere", 1);
    auto const stale =
        FailureOf([&] { return KeyringTokenStore::Create("editor")->Load(kService); });
    EXPECT_TRUE(!stale || stale->isAbsent);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    EXPECT_FALSE(KeyringTokenStore::Create("editor"));
}

}  // namespace
