#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillosdk {

/// A stretch of a file that goes to the service as an upload of its own.
struct UploadRange {
    std::uint64_t offset = 0;  ///< in the file
    std::uint64_t length = 0;
    std::string key;              ///< under which it is created; each attempt anew has its own
    std::string location;         ///< its path at the service; empty until it is created
    std::uint64_t confirmed = 0;  ///< how many of its bytes the service has

    [[nodiscard]] std::uint64_t End() const { return offset + length; }
    [[nodiscard]] bool IsComplete() const { return confirmed == length; }
};

/// Where an upload stands: all that is needed to go on with it. A plain value.
struct UploadState {
    std::string key;         ///< under which the service knows the whole
    std::uint64_t size = 0;  ///< of the file
    bool isJoined = false;   ///< the ranges are partial uploads; otherwise one range is the upload
    std::vector<UploadRange> ranges{};  ///< by their offsets, without gaps from the file's start

    /// Where the next range begins.
    [[nodiscard]] std::uint64_t PlannedEnd() const {
        return ranges.empty() ? 0 : ranges.back().End();
    }
};

/// The size of every piece but a range's last. Large enough that the turn between two of them costs
/// next to nothing beside their sending, small enough to repeat one when a connection is cut.
inline constexpr std::uint64_t kPieceBytes = std::uint64_t{8} << 20;

/// The length of the range that begins at `offset` of a file of `size` bytes, for an upload of so
/// many streams. The fewer streams, the longer the ranges: each costs a request, and the request
/// that joins them has to name all. They are whole pieces, and become shorter towards the file's
/// end, so that what is sent out of order, and hashed late, is little.
[[nodiscard]] std::uint64_t NextRangeLength(std::uint64_t size, std::uint64_t offset, int streams);

}  // namespace quillosdk
