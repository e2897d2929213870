#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>

#include "service/base/Digest.h"
#include "service/store/Ids.h"

namespace quilloservice {

class DataDirectory;

/// The running SHA-256 of an upload's file, from its start up to the confirmed front. It reads what
/// has been written back from the file, which the system still has in memory, so that no write
/// waits for it. Any thread.
class ContentHash {
public:
    explicit ContentHash(std::string path) : path(std::move(path)) {}

    /// The file's first `bytes` bytes are final, and no others. If more than these were hashed, the
    /// hash starts again. One call at a time. Waits only if there are fewer than before.
    void SetFront(std::int64_t bytes);

    /// Hashes the next stretch before the front. Returns whether there is more.
    bool Advance();

    /// The hash of the file's first `bytes` bytes, which are final. Hashes what is left of them.
    Digest Finish(std::int64_t bytes);

private:
    bool AdvanceLocked(std::int64_t limit);

    std::string const path;
    std::mutex mutex;
    Digest digest;            // mutex
    std::int64_t hashed = 0;  // mutex
    std::atomic<std::int64_t> front = 0;
};

/// The hashes of the unfinished uploads' files, and the thread that takes them beside the writes:
/// one for all, a stretch of each in turn. Any thread.
class ContentHashes {
public:
    explicit ContentHashes(DataDirectory const& directory) : directory(directory) {}
    ~ContentHashes();
    ContentHashes(ContentHashes const&) = delete;
    ContentHashes& operator=(ContentHashes const&) = delete;

    /// Whether this process has a hash of the file, and so has had the file in hand before.
    [[nodiscard]] bool Knows(UploadId const& file);

    /// Calls `confirm`, which returns how many bytes at the file's start are final from now on, and
    /// hashes these in the background. The calls of `confirm` follow one another.
    void Follow(UploadId const& file, std::function<std::int64_t()> const& confirm);

    /// Waits for the hash of the file's first `bytes` bytes, which are final.
    Digest Finish(UploadId const& file, std::int64_t bytes);

    /// Forgets the file: it is gone, or other bytes will be written into it.
    void Drop(UploadId const& file);

private:
    std::shared_ptr<ContentHash> Get(UploadId const& file);
    void Run(std::stop_token const& stop);

    DataDirectory const& directory;
    std::mutex following;  // taken before `mutex`
    std::mutex mutex;
    std::condition_variable_any changed;
    std::unordered_map<UploadId, std::shared_ptr<ContentHash>> hashes;  // mutex
    std::deque<std::shared_ptr<ContentHash>> behind;                    // mutex
    std::jthread thread;                                                // mutex
};

}  // namespace quilloservice
