#include "quilloauth/KeyringTokenStore.h"

#include <libsecret/secret.h>
#include <sys/stat.h>

#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <nlohmann/json.hpp>
#include <thread>
#include <utility>

#include "quilloauth/TokenJson.h"
#include "quillocommon/WorkerThread.h"
#include "quillosdk/FailureText.h"

namespace quilloauth {
namespace {

struct Release {
    void operator()(GCancellable* object) const { g_object_unref(object); }
    void operator()(GDBusConnection* object) const { g_object_unref(object); }
    void operator()(SecretService* object) const { g_object_unref(object); }
    void operator()(SecretCollection* object) const { g_object_unref(object); }
    void operator()(SecretValue* value) const { secret_value_unref(value); }
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(GList* objects) const { g_list_free_full(objects, g_object_unref); }
};
template <class T>
using Owned = std::unique_ptr<T, Release>;

SecretSchema const* TheSchema() {
    static SecretSchema const* const schema = secret_schema_new(
        "quillo.SignIn", SECRET_SCHEMA_NONE, "service", SECRET_SCHEMA_ATTRIBUTE_STRING, "client",
        SECRET_SCHEMA_ATTRIBUTE_STRING, nullptr);
    return schema;
}

/// Has what a call creates deliver its signals to a context of the call's own: the default one may
/// be the host's, whose thread would run them, or be nobody's, where they would pile up.
class OwnContext {
public:
    OwnContext() : context(g_main_context_new()) { g_main_context_push_thread_default(context); }
    ~OwnContext() {
        while (g_main_context_iteration(context, FALSE)) {
        }
        g_main_context_pop_thread_default(context);
        g_main_context_unref(context);
    }
    OwnContext(OwnContext const&) = delete;
    OwnContext& operator=(OwnContext const&) = delete;

private:
    GMainContext* const context;
};

/// Ends what waits for the bus after a while.
class Deadline {
public:
    explicit Deadline(std::chrono::milliseconds patience)
        : thread(quillocommon::StartWorkerThread([this, patience](std::stop_token const& stop) {
              std::unique_lock lock(mutex);
              ended.wait_for(lock, stop, patience, [] { return false; });
              if (!stop.stop_requested()) g_cancellable_cancel(cancellable.get());
          })) {}

    [[nodiscard]] GCancellable* Get() const { return cancellable.get(); }

private:
    Owned<GCancellable> const cancellable{g_cancellable_new()};
    std::mutex mutex;
    std::condition_variable_any ended;
    std::jthread const thread;
};

bool IsAbsence(GError const& error) {
    return g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
           g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER);
}

/// What one call to the keyring needs: the service, with its default collection open.
class Call {
public:
    explicit Call(std::chrono::milliseconds patience) : patience(patience), deadline(patience) {
        connection.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, deadline.Get(), &error));
        if (!connection && !g_cancellable_is_cancelled(deadline.Get())) {
            g_clear_error(&error);
            throw TokenStoreFailure("there is no bus", true);
        }
        Check();
        // The library ends the process by default when the bus goes away.
        g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
        // One for each call: the shared one does not notice that the keyring was started anew.
        service.reset(secret_service_open_sync(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_NONE,
                                               deadline.Get(), &error));
        Check();
        // Looked at before anything else, which would have the user asked for a password.
        Owned<SecretCollection> const collection(
            secret_collection_for_alias_sync(service.get(), SECRET_COLLECTION_DEFAULT,
                                             SECRET_COLLECTION_NONE, deadline.Get(), &error));
        Check();
        if (!collection) throw TokenStoreFailure("it has no default collection");
        if (secret_collection_get_locked(collection.get())) throw TokenStoreFailure("it is locked");
    }
    ~Call() { g_clear_error(&error); }
    Call(Call const&) = delete;
    Call& operator=(Call const&) = delete;

    /// The items of `attributes`, those of locked collections as well.
    [[nodiscard]] Owned<GList> Find(GHashTable* attributes) {
        auto const flags =
            static_cast<SecretSearchFlags>(SECRET_SEARCH_ALL | SECRET_SEARCH_LOAD_SECRETS);
        Owned<GList> items(secret_service_search_sync(service.get(), TheSchema(), attributes, flags,
                                                      deadline.Get(), &error));
        Check();
        return items;
    }

    void Store(GHashTable* attributes, std::string const& label, std::string const& text) {
        Owned<SecretValue> const value(
            secret_value_new(text.data(), static_cast<gssize>(text.size()), "application/json"));
        secret_service_store_sync(service.get(), TheSchema(), attributes, SECRET_COLLECTION_DEFAULT,
                                  label.c_str(), value.get(), deadline.Get(), &error);
        Check();
    }

    void Delete(SecretItem* item) {
        if (secret_item_get_locked(item))
            throw TokenStoreFailure("a collection that holds it is locked");
        secret_item_delete_sync(item, deadline.Get(), &error);
        Check();
    }

private:
    /// Throws what the last call has failed with.
    void Check() {
        if (!error) return;
        Owned<GError> const failed(std::exchange(error, nullptr));
        if (g_cancellable_is_cancelled(deadline.Get()))
            throw TokenStoreFailure("it did not answer within " + std::to_string(patience.count()) +
                                    " ms");
        g_dbus_error_strip_remote_error(failed.get());
        throw TokenStoreFailure(quillosdk::Sanitise(failed->message), IsAbsence(*failed));
    }

    std::chrono::milliseconds const patience;
    OwnContext const context;  // goes last, with the signals that what is below has left
    Deadline const deadline;
    Owned<GDBusConnection> connection;
    Owned<SecretService> service;
    GError* error = nullptr;
};

Owned<GHashTable> Attributes(std::string const& address, std::string const& clientID) {
    return Owned<GHashTable>(secret_attributes_build(TheSchema(), "service", address.c_str(),
                                                     "client", clientID.c_str(), nullptr));
}

std::optional<Tokens> TokensIn(SecretItem* item) {
    Owned<SecretValue> const value(secret_item_get_secret(item));
    if (!value) return std::nullopt;
    gsize size = 0;
    auto const* const text = secret_value_get(value.get(), &size);
    return TokensFrom(nlohmann::json::parse(text, text + size, nullptr, false));
}

/// Whether the environment names a bus. The bus's library would start one where it does not.
bool HasSessionBus() {
    // NOLINTBEGIN(concurrency-mt-unsafe): see Create
    char const* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address && *address) return true;
    char const* const directory = std::getenv("XDG_RUNTIME_DIR");
    // NOLINTEND(concurrency-mt-unsafe)
    struct stat status {};
    return directory && *directory &&
           stat((std::string(directory) + "/bus").c_str(), &status) == 0 &&
           S_ISSOCK(status.st_mode);
}

}  // namespace

std::unique_ptr<KeyringTokenStore> KeyringTokenStore::Create(std::string clientID,
                                                             std::chrono::milliseconds patience) {
    if (!HasSessionBus()) return nullptr;
    return std::unique_ptr<KeyringTokenStore>(new KeyringTokenStore(std::move(clientID), patience));
}

KeyringTokenStore::KeyringTokenStore(std::string clientID, std::chrono::milliseconds patience)
    : clientID(std::move(clientID)), patience(patience) {}

KeyringTokenStore::~KeyringTokenStore() = default;

std::optional<Tokens> KeyringTokenStore::Load(std::string const& address) {
    Call call(patience);
    auto const items = call.Find(Attributes(address, clientID).get());
    std::optional<Tokens> newest;
    guint64 newestTime = 0;
    for (auto const* each = items.get(); each; each = each->next) {
        auto* const item = SECRET_ITEM(each->data);
        auto const time = secret_item_get_modified(item);
        if (newest && time <= newestTime) continue;
        if (auto tokens = TokensIn(item)) {
            newest = std::move(tokens);
            newestTime = time;
        }
    }
    return newest;
}

void KeyringTokenStore::Save(std::string const& address, Tokens const& tokens) {
    using nlohmann::json;
    Call(patience).Store(Attributes(address, clientID).get(), "Review sign-in at " + address,
                         ToJson(tokens).dump(-1, ' ', false, json::error_handler_t::replace));
}

void KeyringTokenStore::Forget(std::string const& address) {
    Call call(patience);
    auto const items = call.Find(Attributes(address, clientID).get());
    for (auto const* each = items.get(); each; each = each->next)
        call.Delete(SECRET_ITEM(each->data));
}

}  // namespace quilloauth
