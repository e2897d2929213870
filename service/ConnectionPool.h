#pragma once

#include <httplib.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quilloservice {

/// A thread per connection, made when all others are busy and kept for later ones. A fixed pool
/// would let clients that only keep their connections open lock out the others.
class ConnectionPool : public httplib::TaskQueue {
public:
    void enqueue(std::function<void()> task) override;
    void shutdown() override;

private:
    void Work();

    static constexpr std::size_t kMostThreads = 512;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> tasks_;  // mutex_
    std::vector<std::thread> threads_;         // mutex_
    std::size_t idle_ = 0;                     // mutex_
    bool stopping_ = false;                    // mutex_
};

}  // namespace quilloservice
