#include "service/ConnectionPool.h"

#include <system_error>

namespace quilloservice {

void ConnectionPool::enqueue(std::function<void()> task) {
    std::scoped_lock lock(mutex_);
    tasks_.push_back(std::move(task));
    if (tasks_.size() > idle_ && threads_.size() < kMostThreads) {
        try {
            threads_.emplace_back([this] { Work(); });
        } catch (const std::system_error&) {
            // The system has no thread left; the ones that there are get to the task in time.
            if (threads_.empty()) throw;
        }
    }
    changed_.notify_one();
}

void ConnectionPool::shutdown() {
    std::vector<std::thread> threads;
    {
        std::scoped_lock lock(mutex_);
        stopping_ = true;
        threads.swap(threads_);
    }
    changed_.notify_all();
    for (std::thread& thread : threads)
        thread.join();
}

void ConnectionPool::Work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        ++idle_;
        changed_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
        --idle_;
        if (tasks_.empty()) return;
        auto task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
}

}  // namespace quilloservice
