#include "quillohostkit/session/ShareLocks.h"

#include <utility>

#include "quillohostkit/process/OnMainThread.h"

namespace quillohostkit {

ShareLocks::ShareLocks(KeyLocks newLocks, Hooks newHooks)
    : locks(std::move(newLocks)), hooks(std::move(newHooks)) {}

void ShareLocks::Take(std::vector<std::string> const& wanted, std::function<void()> const& next) {
    if (wanted != keys) {
        Release();
        keys = wanted;
    }
    bool const isWaiting = then != nullptr;
    then = next;
    if (!isWaiting) TakeNext();
}

void ShareLocks::Release() {
    attempt.Reset();
    held.clear();
    keys.clear();
    then = nullptr;
}

void ShareLocks::TakeNext() {
    if (held.size() == keys.size()) return std::exchange(then, nullptr)();
    OnMainThread(locks.Take(keys[held.size()], hooks.onWait), attempt, [this](auto const& taken) {
        try {
            held.push_back(taken.Get());
        } catch (...) {
            Release();
            return hooks.onFailure(std::current_exception());
        }
        TakeNext();
    });
}

}  // namespace quillohostkit
