#pragma once

#include <string>

#include "host/state/IDPath.h"

namespace quillohost {

/// A folder that the user has chosen.
struct ChosenLocation {
    IDPath idPath;         ///< never empty
    std::string namePath;  ///< the same by names, as --to takes it

    [[nodiscard]] moxcore::utility::Guid const& FolderID() const { return idPath.back(); }
};

}  // namespace quillohost
