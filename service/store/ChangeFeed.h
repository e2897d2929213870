#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quilloservice {

class Database;
class Store;
struct Node;

/// One list that is not what it was: in the wire's words "accounts" (of the user who hears of it),
/// "workspaces", "projects" or "assets" (of `parent`).
struct Change {
    std::int64_t number = 0;
    std::string list;
    std::optional<std::string> parent;
};

/// The changes of lists, in the order in which they happened. A change is written in the same
/// transaction as what it tells of, so that none is lost whenever the process ends; the last ten
/// thousand are kept, for those who come back. Any thread.
class ChangeFeed {
public:
    explicit ChangeFeed(Store const& store) : store(store) {}

    // In the transaction that changes the list:

    /// The account lists of all members of `account` have changed. While there are members.
    static void RecordAccounts(Database& database, std::string_view account);
    /// What lies below `parent`, an account, a workspace or a folder, has changed.
    static void RecordChildren(Database& database, Node const& parent);

    /// Tells the listener that there is something new. After the transaction.
    void Announce() const {
        if (listener) listener();
    }

    /// `function` is called by each Announce, on its thread. Before there is any.
    void Listen(std::function<void()> function) { listener = std::move(function); }

    /// The number of the last change there was.
    [[nodiscard]] std::int64_t Position() const;

    /// Whether all changes after `number` are still known.
    [[nodiscard]] bool Reaches(std::int64_t number) const;

    /// The first `most` changes after `number` that `user` may hear of.
    [[nodiscard]] std::vector<Change> After(std::int64_t number, std::string_view user,
                                            std::int64_t most) const;

private:
    Store const& store;
    std::function<void()> listener;
};

}  // namespace quilloservice
