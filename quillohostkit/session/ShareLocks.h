#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "moxcore/utility/LifetimeToken.h"
#include "quillohostkit/Export.h"
#include "quillohostkit/state/KeyLocks.h"

namespace quillohostkit {

/// Several keys that are held together, taken without waiting for them in the call. Main thread.
class QUILLOHOSTKIT_API ShareLocks {
public:
    struct Hooks {
        std::function<void()> onWait;  ///< somebody else has one of them
        std::function<void(std::exception_ptr)> onFailure;
    };

    ShareLocks(KeyLocks locks, Hooks hooks);

    /// Calls `then` once it holds `keys` and no others: at once when it does already, else later.
    /// Abandons an earlier wait.
    void Take(std::vector<std::string> const& keys, std::function<void()> const& then);

    /// Lets go of all, and gives up what is waited for.
    void Release();

private:
    void TakeNext();

    KeyLocks locks;
    Hooks hooks;
    std::vector<std::string> keys;
    std::vector<std::shared_ptr<KeyLocks::Lock>> held;  // of the first of `keys`
    std::function<void()> then;
    moxcore::utility::LifetimeToken attempt;  // of the locks being taken
};

}  // namespace quillohostkit
