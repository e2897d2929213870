#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "moxcore/async/Future.h"
#include "quillohostkit/Export.h"

namespace quillohostkit {

/// Keeps the hosts that share a data directory out of each other's way: a key is held by one of
/// them at a time, and let go when its holder ends, however that comes about. All keys are in one
/// file, each being a lock on one byte of it. Any thread.
class QUILLOHOSTKIT_API KeyLocks {
public:
    /// Holds its key until it is destroyed.
    class Lock {
    public:
        virtual ~Lock() = default;
    };

    /// The locks in `file`, which is made when it is missing.
    explicit KeyLocks(std::filesystem::path file);

    /// The lock on `key`, once nobody else has it. `onWait` is called at once, in the call, when
    /// somebody has. Fails with a Failure when the file cannot be used. To give up waiting, drop
    /// the future.
    [[nodiscard]] moxcore::async::Future<std::shared_ptr<Lock>> Take(
        std::string const& key, std::function<void()> const& onWait) const;

private:
    std::filesystem::path file;
};

}  // namespace quillohostkit
