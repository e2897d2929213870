#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "quilloauth/FileTokenStore.h"
#include "quilloauth/TokenStore.h"
#include "quilloauth/Worker.h"

namespace quilloauth {

/// Where a session keeps its tokens: in the keyring, when there is one, else in the file. Tokens
/// that are still in the file move over when they are first asked for, and leave the file once the
/// keyring has them. A keyring that fails is not asked again by this object: it is reported once,
/// as a failure of the step KeepSignIn, and the file serves in its place; one that is not there at
/// all is not worth a word. The keyring is asked on the worker only, so that nobody else waits for
/// it.
class TokenKeeper {
public:
    /// Tells the service at an address that a session has ended. Called on the worker.
    using EndSession = std::function<void(std::string const& address, Tokens const& tokens)>;

    /// The file is at `path`; `keyring` may be null. `endSession` gets the tokens of a sign-out
    /// that only the keyring knew.
    TokenKeeper(std::string path, std::unique_ptr<TokenStore> keyring, Worker& worker,
                EndSession endSession);

    /// The tokens for the service at `address`, if any. On the worker.
    [[nodiscard]] std::optional<Tokens> Load(std::string const& address);

    /// Puts `tokens` in place of those for `address`: at once for Load, as soon as can be for the
    /// next start. What cannot be kept for that lasts as long as this object; the result then says
    /// why, for ReportNotKept, or that comes later by itself. Any thread.
    [[nodiscard]] std::optional<std::string> Save(std::string const& address, Tokens const& tokens);
    static void ReportNotKept(std::string const& why);

    /// What Forget leaves to its caller.
    struct Forgotten {
        bool isKeptFromNextStart = true;  ///< false: the file cannot be written
        std::optional<Tokens> tokens;     ///< those that were found at once, to be ended
    };

    /// Forgets those for `address`: at once for Load and for the next start, which finishes what
    /// this one cannot. `isSignOut`: the service does not know yet that the session has ended. Any
    /// thread.
    [[nodiscard]] Forgotten Forget(std::string const& address, bool isSignOut);

    /// Sleeps until the keyring has forgotten what it has to, or has failed to, for `patience` at
    /// most. Not on the worker.
    void AwaitForgetting(std::chrono::milliseconds patience);

private:
    /// A change that has not reached the keyring yet, or could not be kept.
    struct Change {
        std::optional<Tokens> tokens;  // none: to be forgotten
        bool isSignOut = false;
        unsigned number = 0;
    };

    [[nodiscard]] std::optional<Change> PendingFor(std::string const& address) const;
    void Put(std::string const& address, Change change);
    void Remove(std::string const& address);

    // On the worker.
    [[nodiscard]] std::optional<Tokens> LoadFromKeyring(std::string const& address);
    void CarryOut(std::string const& address);
    void TellKeyring(std::string const& address, Change const& change);
    void TellFile(std::string const& address, Change const& change);
    void GiveUpKeyring(TokenStoreFailure const& failure);

    FileTokenStore file;
    std::unique_ptr<TokenStore> const keyring;  // asked on the worker
    Worker& worker;
    EndSession const endSession;
    std::atomic<bool> usesKeyring;
    std::atomic<bool> keyringMayHoldTokens;  // though it cannot be asked

    /// Held while a change comes and while the file is brought up to one, so that the last one
    /// wins; before `mutex`. Nobody asks the keyring meanwhile.
    std::mutex fileMutex;

    mutable std::mutex mutex;  // held for no longer than it takes to copy
    std::condition_variable changed;
    std::map<std::string, Change> pending;  // guarded by mutex; by address
    unsigned changeCount = 0;               // guarded by mutex
};

}  // namespace quilloauth
