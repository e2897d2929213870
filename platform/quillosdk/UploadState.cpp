#include "quillosdk/UploadState.h"

#include <algorithm>

namespace quillosdk {

std::uint64_t NextRangeLength(std::uint64_t size, std::uint64_t offset, int streams) {
    auto const count = static_cast<std::uint64_t>(streams);
    auto const left = size - offset;
    auto const wanted = std::min(size / (8 * count), left / (count + 2));
    auto const pieces = (wanted + kPieceBytes - 1) / kPieceBytes;
    return std::min(std::max<std::uint64_t>(pieces, 1) * kPieceBytes, left);
}

}  // namespace quillosdk
