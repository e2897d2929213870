#include "quillosdk/ChunkReader.h"

#define XXH_STATIC_LINKING_ONLY  // for a state that needs no allocation
#include <xxhash.h>

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace quillosdk {
namespace {

/// Read and hashed at a time, so that the bytes are still in the processor's cache for hashing.
constexpr std::size_t kSliceBytes = std::size_t{256} * 1024;

/// Kept for the next piece: one is being sent while one is being filled.
constexpr std::size_t kSpareBuffers = 2;

/// A damaged piece is recognised by a checksum that costs next to nothing; that nothing is amiss
/// with the whole is the business of its SHA-256.
std::string ChecksumHeader(XXH3_state_t const& piece) {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(&piece));
    return "xxh128 " + Base64(canonical.digest);
}

}  // namespace

class ChunkReader::Buffers : public std::enable_shared_from_this<Buffers> {
public:
    /// A buffer of `size` bytes, which comes back here when it is dropped.
    [[nodiscard]] std::shared_ptr<std::string> Take(std::size_t size) {
        std::unique_ptr<std::string> buffer;
        {
            std::lock_guard lock(mutex);
            if (!spare.empty()) {
                buffer = std::move(spare.back());
                spare.pop_back();
            }
        }
        if (!buffer) buffer = std::make_unique<std::string>();
        buffer->resize(size);
        return {buffer.release(), [self = shared_from_this()](std::string* dropped) {
                    self->PutBack(std::unique_ptr<std::string>(dropped));
                }};
    }

private:
    void PutBack(std::unique_ptr<std::string> buffer) {
        std::lock_guard lock(mutex);
        if (spare.size() < kSpareBuffers) spare.push_back(std::move(buffer));
    }

    std::mutex mutex;
    std::vector<std::unique_ptr<std::string>> spare;  // guarded by mutex
};

ChunkReader::ChunkReader(std::shared_ptr<FileSnapshot const> file)
    : file(std::move(file)), buffers(std::make_shared<Buffers>()) {}

std::shared_ptr<Chunk const> ChunkReader::Read(std::uint64_t offset) {
    file->CheckUnchanged();
    auto const size =
        static_cast<std::size_t>(std::min<std::uint64_t>(kChunkBytes, file->Size() - offset));
    auto const bytes = buffers->Take(size);
    XXH3_state_t piece;  // on the stack, which has the alignment that it needs
    XXH3_128bits_reset(&piece);
    for (std::size_t at = 0; at < size;) {
        auto const slice = std::span(*bytes).subspan(at, std::min(kSliceBytes, size - at));
        file->ReadAt(offset + at, slice);
        XXH3_128bits_update(&piece, slice.data(), slice.size());
        at += slice.size();
        // Bytes read a second time are in the whole file's checksum already.
        if (auto const end = offset + at; end > contentEnd) {
            content.Update(slice.last(std::min<std::uint64_t>(slice.size(), end - contentEnd)));
            contentEnd = end;
        }
    }

    auto chunk = std::make_shared<Chunk>();
    chunk->offset = offset;
    chunk->bytes = bytes;
    chunk->checksum = ChecksumHeader(piece);
    if (chunk->End() == file->Size()) {
        file->CheckStillThere();
        if (contentSha256.empty()) contentSha256 = Sha256::InHex(content.Finish());
        chunk->contentSha256 = contentSha256;
    }
    return chunk;
}

}  // namespace quillosdk
