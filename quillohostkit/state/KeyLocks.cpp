#include "quillohostkit/state/KeyLocks.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <thread>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/Failure.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

using moxcore::async::Future;
using moxcore::async::Promise;

/// The byte of the file that stands for `key`. The same in every build, as hosts of several
/// versions may share the file (64-bit FNV-1a). Two keys with one byte only wait needlessly.
off_t PositionOf(std::string const& key) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (unsigned char c : key)
        hash = (hash ^ c) * 0x100000001B3;
    return static_cast<off_t>(hash >> 2);
}

class ByteLock : public KeyLocks::Lock {
public:
    ByteLock(std::filesystem::path const& file, std::string const& key)
        : descriptor(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
        if (descriptor < 0) Fail(file);
        byte.l_type = F_WRLCK;
        byte.l_whence = SEEK_SET;
        byte.l_start = PositionOf(key);
        byte.l_len = 1;
    }
    ~ByteLock() override { close(descriptor); }
    ByteLock(ByteLock const&) = delete;
    ByteLock& operator=(ByteLock const&) = delete;

    [[nodiscard]] bool TryTake() { return fcntl(descriptor, F_OFD_SETLK, &byte) == 0; }

    /// Waits for it; false when that is impossible.
    [[nodiscard]] bool Take() {
        int result = 0;
        do
            result = fcntl(descriptor, F_OFD_SETLKW, &byte);
        while (result != 0 && errno == EINTR);
        return result == 0;
    }

    [[noreturn]] static void Fail(std::filesystem::path const& file) {
        throw Failure(
            FailureKind::Other,
            Text("$$$/Vistrel/quillohostkit/State/Lock=Cannot lock \"{file}\": {reason}",
                 {{"file", file.string()}, {"reason", std::generic_category().message(errno)}}));
    }

private:
    int descriptor;
    struct flock byte {};
};

}  // namespace

KeyLocks::KeyLocks(std::filesystem::path newFile) : file(std::move(newFile)) {}

Future<std::shared_ptr<KeyLocks::Lock>> KeyLocks::Take(std::string const& key,
                                                       std::function<void()> const& onWait) const {
    auto const promise = std::make_shared<Promise<std::shared_ptr<Lock>>>();
    auto future = promise->GetFuture();
    auto const lock = std::make_shared<ByteLock>(file, key);
    if (lock->TryTake()) {
        promise->SetValue(lock);
        return future;
    }
    onWait();
    // The kernel's wait cannot be called off; the thread has nothing but what it holds itself, and
    // may stay behind when the process ends.
    std::thread([promise, lock, file = file] {
        try {
            if (!lock->Take()) ByteLock::Fail(file);
            promise->SetValue(lock);
        } catch (...) {
            promise->SetException(std::current_exception());
        }
    }).detach();
    return future;
}

}  // namespace quillohostkit
