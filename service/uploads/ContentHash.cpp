#include "service/uploads/ContentHash.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <vector>

#include "service/base/File.h"
#include "service/store/DataDirectory.h"

namespace quilloservice {

namespace {

/// Hashed at a time: small enough that the threads of a hash take turns, large enough to open the
/// file for.
constexpr std::int64_t kStretchBytes = 4 << 20;
constexpr std::size_t kReadBytes = 256 << 10;

}  // namespace

void ContentHash::SetFront(std::int64_t bytes) {
    if (front.exchange(bytes) <= bytes) return;
    std::scoped_lock lock(mutex);
    if (hashed <= bytes) return;
    digest = Digest();
    hashed = 0;
}

bool ContentHash::Advance() {
    std::scoped_lock lock(mutex);
    return AdvanceLocked(front);
}

Digest ContentHash::Finish(std::int64_t bytes) {
    for (;;) {
        std::scoped_lock lock(mutex);
        front = std::max(front.load(), bytes);
        if (!AdvanceLocked(bytes)) return digest;
    }
}

bool ContentHash::AdvanceLocked(std::int64_t limit) {
    if (hashed >= limit) return false;
    File const file(path, File::Mode::Read);
    std::vector<char> buffer(kReadBytes);
    std::int64_t const end = std::min(limit, hashed + kStretchBytes);
    while (hashed < end) {
        auto wanted = std::min<std::int64_t>(end - hashed, static_cast<std::int64_t>(kReadBytes));
        std::size_t count = file.ReadAt(hashed, buffer.data(), static_cast<std::size_t>(wanted));
        if (count == 0) throw std::runtime_error("an upload's file became shorter");
        digest.Update({buffer.data(), count});
        hashed += static_cast<std::int64_t>(count);
    }
    return hashed < limit;
}

ContentHashes::~ContentHashes() {
    std::jthread ending;
    {
        std::scoped_lock lock(mutex);
        ending = std::move(thread);
    }
}  // which stops `ending` and waits for it

bool ContentHashes::Knows(UploadId const& file) {
    std::scoped_lock lock(mutex);
    return hashes.contains(file);
}

std::shared_ptr<ContentHash> ContentHashes::Get(UploadId const& file) {
    std::scoped_lock lock(mutex);
    auto& hash = hashes[file];
    if (!hash) hash = std::make_shared<ContentHash>(directory.UploadPath(file));
    return hash;
}

void ContentHashes::Follow(UploadId const& file, std::function<std::int64_t()> const& confirm) {
    std::scoped_lock order(following);
    std::int64_t const bytes = confirm();
    auto const hash = Get(file);
    hash->SetFront(bytes);
    {
        std::scoped_lock lock(mutex);
        if (std::find(behind.begin(), behind.end(), hash) == behind.end()) behind.push_back(hash);
        if (!thread.joinable())
            thread = std::jthread([this](std::stop_token const& stop) { Run(stop); });
    }
    changed.notify_one();
}

Digest ContentHashes::Finish(UploadId const& file, std::int64_t bytes) {
    return Get(file)->Finish(bytes);
}

void ContentHashes::Drop(UploadId const& file) {
    std::scoped_lock lock(mutex);
    hashes.erase(file);
}

void ContentHashes::Run(std::stop_token const& stop) {
    for (;;) {
        std::shared_ptr<ContentHash> hash;
        {
            std::unique_lock lock(mutex);
            if (!changed.wait(lock, stop, [this] { return !behind.empty(); })) return;
            hash = std::move(behind.front());
            behind.pop_front();
        }
        bool more = false;
        try {
            more = hash->Advance();
        } catch (std::exception const&) {
            // The publication meets the same problem, and reports it.
        }
        std::scoped_lock lock(mutex);
        if (more && std::find(behind.begin(), behind.end(), hash) == behind.end())
            behind.push_back(hash);
    }
}

}  // namespace quilloservice
