#pragma once

#include <string>

#include "quillohostkit/state/IDPath.h"

namespace quillohostkit {

/// A folder that the user has chosen.
struct ChosenLocation {
    IDPath idPath;         ///< never empty
    std::string namePath;  ///< the same by names, as --to takes it

    [[nodiscard]] moxcore::utility::Guid const& FolderID() const { return idPath.back(); }
};

}  // namespace quillohostkit
