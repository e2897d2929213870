#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "service/store/Ids.h"

namespace quilloservice {

class Database;
class Store;
struct Node;

/// A change of one list, in the wire's words: "accounts" of the user who receives the change, or
/// "workspaces", "projects" or "assets" of `parent`.
struct Change {
    ChangeNumber number{};
    std::string list;
    std::optional<NodeId> parent;
};

/// The changes of lists, in order. A change is recorded in the transaction that makes it, so a
/// crash loses none. At least the last 10,000 are kept for clients that reconnect. Any thread.
class ChangeFeed {
public:
    explicit ChangeFeed(Store const& store) : store(store) {}

    // To be called in the transaction that changes the list:

    /// Records a change of the account lists of the members of `account`. Before the memberships
    /// are deleted.
    static void RecordAccounts(Database& database, AccountId const& account);
    /// Records a change of the list below `parent`, an account, workspace or folder.
    static void RecordChildren(Database& database, Node const& parent);

    /// Calls the listener. To be called after the transaction.
    void Announce() const {
        if (listener) listener();
    }

    /// Sets the listener, which runs on the thread that calls Announce. Call before the first
    /// Announce.
    void Listen(std::function<void()> function) { listener = std::move(function); }

    /// The number of the latest change.
    [[nodiscard]] ChangeNumber Position() const;

    /// Whether all changes after `number` are still kept.
    [[nodiscard]] bool Reaches(ChangeNumber number) const;

    /// The first `most` changes after `number` in lists that `user` may read.
    [[nodiscard]] std::vector<Change> After(ChangeNumber number, UserId const& user,
                                            std::int64_t most) const;

private:
    Store const& store;
    std::function<void()> listener;
};

}  // namespace quilloservice
