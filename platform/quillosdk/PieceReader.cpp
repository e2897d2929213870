#include "quillosdk/PieceReader.h"

#define XXH_STATIC_LINKING_ONLY  // for a state that needs no allocation
#include <xxhash.h>

#include <algorithm>
#include <span>
#include <utility>

namespace quillosdk {
namespace {

/// Read and hashed at a time, so that the bytes are still in the processor's cache for hashing.
constexpr std::size_t kSliceBytes = std::size_t{256} * 1024;

/// A damaged piece is recognised by a checksum that costs next to nothing; that nothing is amiss
/// with the whole is the business of its SHA-256.
std::string ChecksumHeader(XXH3_state_t const& piece) {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(&piece));
    return "xxh128 " + Base64(canonical.digest);
}

class FileSlice final : public BodySource {
public:
    FileSlice(std::shared_ptr<FileSnapshot const> file, std::uint64_t begin, std::uint64_t size)
        : file(std::move(file)), begin(begin), size(size) {}

    [[nodiscard]] std::uint64_t Size() const override { return size; }

    void Read(std::uint64_t offset, std::span<char> bytes) const override {
        file->ReadAt(begin + offset, bytes);
    }

private:
    std::shared_ptr<FileSnapshot const> file;
    std::uint64_t begin;
    std::uint64_t size;
};

}  // namespace

PieceReader::PieceReader(std::shared_ptr<FileSnapshot const> file)
    : file(std::move(file)), slice(kSliceBytes, '\0') {}

std::shared_ptr<Piece const> PieceReader::Read(std::uint64_t offset, std::uint64_t size) {
    file->CheckUnchanged();
    auto const hashedBefore = contentEnd;
    XXH3_state_t state;  // on the stack, which has the alignment that it needs
    XXH3_128bits_reset(&state);
    for (std::uint64_t at = offset; at < offset + size;) {
        auto const bytes = std::span(slice).first(std::min(kSliceBytes, offset + size - at));
        file->ReadAt(at, bytes);
        XXH3_128bits_update(&state, bytes.data(), bytes.size());
        at += bytes.size();
        bool const isNext = at > contentEnd && at - bytes.size() <= contentEnd;
        if (!isNext) continue;
        content.Update(bytes.last(at - contentEnd));
        contentEnd = at;
    }
    HashTo(std::min(hashedBefore + size, file->Size()));
    if (offset + size == file->Size()) file->CheckStillThere();
    return std::make_shared<Piece const>(Piece{offset, size, ChecksumHeader(state),
                                               std::make_shared<FileSlice>(file, offset, size)});
}

std::string const& PieceReader::ContentSha256() {
    if (contentSha256.empty()) {
        HashTo(file->Size());
        file->CheckStillThere();
        contentSha256 = Sha256::InHex(content.Finish());
    }
    return contentSha256;
}

void PieceReader::HashTo(std::uint64_t end) {
    while (contentEnd < end) {
        auto const bytes = std::span(slice).first(std::min(kSliceBytes, end - contentEnd));
        file->ReadAt(contentEnd, bytes);
        content.Update(bytes);
        contentEnd += bytes.size();
    }
}

}  // namespace quillosdk
