#pragma once

#include <cstdint>

namespace quillomoxui {

/// How far a node is with its children.
enum class FetchChildrenState : std::uint32_t {
    NotFetched = 0,
    Fetching = 1,  ///< asked for and not there yet; a failed request leaves a node here
    Fetched = 2,   ///< the child properties hold what the service returned
};

}  // namespace quillomoxui
