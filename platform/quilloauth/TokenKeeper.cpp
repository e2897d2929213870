#include "quilloauth/TokenKeeper.h"

#include <algorithm>
#include <utility>

#include "moxcore/config/Error.h"
#include "quillocommon/Failures.h"

namespace quilloauth {
namespace {

void Warn(std::string const& message) {
    quillocommon::ReportFailure(
        {quillocommon::Step::KeepSignIn, moxcore::config::kUnknownFailure, 0, message});
}

}  // namespace

TokenKeeper::TokenKeeper(std::string path, std::unique_ptr<TokenStore> newKeyring, Worker& worker,
                         EndSession endSession)
    : file(std::move(path)),
      keyring(std::move(newKeyring)),
      worker(worker),
      endSession(std::move(endSession)),
      usesKeyring(keyring != nullptr),
      keyringMayHoldTokens(keyring != nullptr) {}

std::optional<Tokens> TokenKeeper::Load(std::string const& address) {
    if (auto const change = PendingFor(address)) return change->tokens;
    if (usesKeyring) {
        try {
            return LoadFromKeyring(address);
        } catch (TokenStoreFailure const& failure) {
            GiveUpKeyring(failure);
        }
    }
    return file.Load(address);
}

std::optional<Tokens> TokenKeeper::LoadFromKeyring(std::string const& address) {
    if (file.IsMarkedSignedOut(address)) {
        {
            std::lock_guard const lock(fileMutex);
            if (auto const change = PendingFor(address)) return change->tokens;
            Put(address, {std::nullopt, true});
        }
        CarryOut(address);
        return std::nullopt;
    }
    auto tokens = file.Load(address);
    if (!tokens) return keyring->Load(address);
    // The file's are the newer ones: they were written when the keyring could not be had.
    keyring->Save(address, *tokens);
    try {
        file.ForgetIfStill(address, *tokens);
    } catch (TokenStoreFailure const& failure) {
        Warn(std::string("The sign-in has moved to the desktop's keyring, but stays in its file as "
                         "well: ") +
             failure.what() + ".");
    }
    return tokens;
}

std::optional<std::string> TokenKeeper::Save(std::string const& address, Tokens const& tokens) {
    std::lock_guard const lock(fileMutex);
    Put(address, {tokens});
    if (usesKeyring) {
        worker.PostLasting([this, address] { CarryOut(address); });
        return std::nullopt;
    }
    try {
        file.Save(address, tokens);
        Remove(address);
        return std::nullopt;
    } catch (TokenStoreFailure const& failure) {
        return failure.what();
    }
}

void TokenKeeper::ReportNotKept(std::string const& why) {
    Warn("Could not keep the sign-in for the next start: " + why + ".");
}

TokenKeeper::Forgotten TokenKeeper::Forget(std::string const& address, bool isSignOut) {
    std::lock_guard const lock(fileMutex);
    Forgotten forgotten;
    auto const change = PendingFor(address);
    forgotten.tokens = change ? change->tokens : file.Load(address);
    Put(address, {std::nullopt, isSignOut});
    try {
        if (keyringMayHoldTokens)
            file.MarkSignedOut(address);
        else
            file.Forget(address);
    } catch (TokenStoreFailure const&) {
        forgotten.isKeptFromNextStart = usesKeyring;  // which has not been updated yet
    }
    if (usesKeyring)
        worker.PostLasting([this, address] { CarryOut(address); });
    else
        Remove(address);
    return forgotten;
}

void TokenKeeper::CarryOut(std::string const& address) {
    auto const change = PendingFor(address);
    if (!change) return;  // an earlier run has seen to it
    if (usesKeyring) {
        try {
            return TellKeyring(address, *change);
        } catch (TokenStoreFailure const& failure) {
            GiveUpKeyring(failure);
        }
    }
    try {
        TellFile(address, *change);
    } catch (TokenStoreFailure const& failure) {
        if (change->tokens) return ReportNotKept(failure.what());
        Warn(std::string("The sign-out lasts until the next start only: ") + failure.what() + ".");
    }
}

void TokenKeeper::TellKeyring(std::string const& address, Change const& change) {
    if (change.tokens) {
        keyring->Save(address, *change.tokens);
    } else {
        auto const found = keyring->Load(address);
        keyring->Forget(address);
        if (found && change.isSignOut) endSession(address, *found);
    }
    std::lock_guard const lock(fileMutex);
    auto const current = PendingFor(address);
    if (!current || current->number != change.number) return;
    try {
        file.Forget(address);  // the mark, or what the keyring has now
    } catch (TokenStoreFailure const&) {
        // What is left there is settled when it is next asked for.
    }
    Remove(address);
}

void TokenKeeper::TellFile(std::string const& address, Change const& change) {
    std::lock_guard const lock(fileMutex);
    auto const current = PendingFor(address);
    if (!current || current->number != change.number) return;
    if (change.tokens)
        file.Save(address, *change.tokens);
    else if (keyringMayHoldTokens)
        file.MarkSignedOut(address);
    else
        file.Forget(address);
    Remove(address);
}

void TokenKeeper::GiveUpKeyring(TokenStoreFailure const& failure) {
    usesKeyring = false;
    if (failure.isAbsent) {
        keyringMayHoldTokens = false;
        return;
    }
    Warn(std::string("The desktop's keyring cannot be used (") + failure.what() +
         "); the sign-in is kept in a file that only you can read instead.");
}

std::optional<TokenKeeper::Change> TokenKeeper::PendingFor(std::string const& address) const {
    std::lock_guard lock(mutex);
    auto const found = pending.find(address);
    return found == pending.end() ? std::nullopt : std::optional(found->second);
}

void TokenKeeper::Put(std::string const& address, Change change) {
    std::lock_guard lock(mutex);
    change.number = ++changeCount;
    pending.insert_or_assign(address, std::move(change));
}

void TokenKeeper::Remove(std::string const& address) {
    std::lock_guard lock(mutex);
    pending.erase(address);
    changed.notify_all();
}

void TokenKeeper::AwaitForgetting(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, patience, [this] {
        return std::all_of(pending.begin(), pending.end(),
                           [](auto const& each) { return each.second.tokens.has_value(); });
    });
}

}  // namespace quilloauth
