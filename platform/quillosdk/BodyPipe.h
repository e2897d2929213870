#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace quillosdk {

/// The body of an answer on its way from the transport to a reader who takes it when there is time.
/// Where the reader is slower, the transport stops reading, and the service has to wait. Any
/// thread.
class BodyPipe {
public:
    /// How much lies in a pipe before the transport has to wait.
    static constexpr std::size_t kMostBytes = std::size_t{64} * 1024;

    /// Calls `onFilled`, on the transport's thread, whenever there is something in the empty pipe:
    /// the reader is to Take it, there or elsewhere.
    explicit BodyPipe(std::function<void()> onFilled) : onFilled(std::move(onFilled)) {}
    BodyPipe(BodyPipe const&) = delete;
    BodyPipe& operator=(BodyPipe const&) = delete;

    // The reader's end.

    /// All that is there.
    [[nodiscard]] std::string Take();

    /// Nothing more is wanted: the request is cancelled.
    void Close();

    /// Whether the transport waits for a Take.
    [[nodiscard]] bool IsWaitedFor() const;

    // The transport's end.

    /// Has `newWakeUp` called, on any thread, when what was Full may be offered again, and when the
    /// pipe is closed.
    void SetWakeUp(std::function<void()> newWakeUp);

    enum class Offered { Taken, Full, Closed };

    /// Puts `bytes` in whole or not at all. What is longer than the pipe fits when that is empty.
    [[nodiscard]] Offered Offer(std::string_view bytes);

    [[nodiscard]] bool IsClosed() const;

private:
    std::function<void()> const onFilled;

    mutable std::mutex mutex;
    std::string content;           // guarded by mutex
    std::function<void()> wakeUp;  // guarded by mutex
    bool isWaitedFor = false;      // guarded by mutex
    bool isClosed = false;         // guarded by mutex
};

}  // namespace quillosdk
