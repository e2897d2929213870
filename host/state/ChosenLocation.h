#pragma once

#include <string>
#include <vector>

#include "moxcore/utility/Guid.h"

namespace quillohost {

/// A folder that the user has chosen.
struct ChosenLocation {
    std::vector<moxcore::utility::Guid> way;  ///< IDs from the account down to the folder; never
                                              ///< empty
    std::string path;                         ///< the same by names, as --to takes it

    [[nodiscard]] moxcore::utility::Guid const& FolderID() const { return way.back(); }
};

}  // namespace quillohost
