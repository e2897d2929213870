#pragma once

#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

#include "service/store/Database.h"

namespace quilloservice {

/// The service's records, in one of the engines below this folder. Functions throw DatabaseError.
/// Any thread.
class Store {
public:
    /// How durable a committed transaction is: it survives a power failure (Disk), or only the end
    /// of this process, which is much faster and enough for progress notes.
    enum class Durability { Disk, Process };

    virtual ~Store() = default;
    Store() = default;
    Store(Store const&) = delete;
    Store& operator=(Store const&) = delete;

    /// Runs `work(Database&)`, which must only read, on a connection from the pool. `work` may run
    /// again after a failure.
    template <typename Work>
    auto Read(Work&& work) const {
        return Run(work, [this](auto const& wrapped) { ReadWith(wrapped); });
    }

    /// Runs `work(Database&)` in a transaction, which an exception rolls back. The effect is that
    /// of transactions that run one at a time. `work` must be short: no syncing of files, no
    /// waiting for clients. It may run again after a collision with another transaction, so it must
    /// change nothing but the database.
    template <typename Work>
    auto Write(Work&& work, Durability durability = Durability::Disk) {
        return Run(work, [&](auto const& wrapped) { WriteWith(wrapped, durability); });
    }

private:
    using Wrapped = std::function<void(Database&)>;

    virtual void ReadWith(Wrapped const& work) const = 0;
    virtual void WriteWith(Wrapped const& work, Durability durability) = 0;

    /// Has `run` run `work`, and returns the result of the last time.
    template <typename Work, typename Runner>
    static auto Run(Work&& work, Runner&& run) {
        using Result = std::decay_t<decltype(work(std::declval<Database&>()))>;
        if constexpr (std::is_void_v<Result>) {
            run(Wrapped([&work](Database& database) { work(database); }));
        } else {
            std::optional<Result> result;
            run(Wrapped([&](Database& database) { result.emplace(work(database)); }));
            return *std::move(result);
        }
    }
};

}  // namespace quilloservice
