#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "service/Digest.h"

namespace quilloservice {

class File;

/// Writes one request's body into an upload's file through a buffer of fixed size, and feeds the
/// checksums on the way, while the bytes are still in the processor's cache. One thread.
class BodyWriter {
public:
    /// Writes to `file` from `start`, at most up to `limit`, and feeds `whole`, the checksum of the
    /// file's first `start` bytes. `bodyAlgorithm` asks for a checksum of the body as well.
    BodyWriter(File& file, Digest& whole, std::int64_t start, std::int64_t limit,
               std::optional<Digest::Algorithm> bodyAlgorithm);

    /// Called with the offset up to which bytes are in the file, after each write.
    std::function<void(std::int64_t)> onWritten;

    /// Throws ApiError 413 when the body goes past the limit.
    void Take(std::string_view bytes);
    void Flush();

    /// Up to where bytes are in the file.
    [[nodiscard]] std::int64_t end() const { return end_; }
    [[nodiscard]] bool overrun() const { return overrun_; }

    /// The checksum, raw, of the body up to `end`.
    [[nodiscard]] std::string BodyChecksum() const;

private:
    File& file_;
    Digest& whole_;
    std::optional<Digest> body_;  ///< absent, too, where `whole_` is the body's checksum as well
    std::unique_ptr<char[]> buffer_;
    std::size_t buffered_ = 0;
    std::int64_t end_;
    std::int64_t limit_;
    bool overrun_ = false;
};

}  // namespace quilloservice
