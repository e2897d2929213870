#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quilloservice {

/// Part of a file: `length` bytes starting at `first`.
struct ByteRange {
    std::int64_t first = 0;
    std::int64_t length = 0;
};

/// The result of a Range header (RFC 9110, section 14.2).
struct RangeRequest {
    /// The part to send; nothing: the whole file, because the header is malformed or has several
    /// ranges, and so is ignored.
    std::optional<ByteRange> part;
    bool unsatisfiable = false;
};

/// Parses the Range header of a request for a file of `size` bytes.
RangeRequest ParseRange(std::string_view header, std::int64_t size);

}  // namespace quilloservice
