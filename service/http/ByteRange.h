#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quilloservice {

/// Part of a file: `length` bytes from `first` on.
struct ByteRange {
    std::int64_t first = 0;
    std::int64_t length = 0;
};

/// What a Range header asks for of a file of `size` bytes (RFC 9110, section 14.2).
struct RangeRequest {
    /// The part to answer; nothing: the whole file, also for headers that are ignored, such as
    /// malformed ones and those with several ranges.
    std::optional<ByteRange> part;
    bool unsatisfiable = false;
};

RangeRequest ParseRange(std::string_view header, std::int64_t size);

}  // namespace quilloservice
