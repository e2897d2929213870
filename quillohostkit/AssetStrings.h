#pragma once

#include <QString>
#include <optional>

#include "quillohostkit/Asset.h"
#include "quillohostkit/Export.h"

namespace quillohostkit {

/// Where the few strings are kept that belong to a shared asset: its link, its version stack, its
/// destination. The kit keeps them itself, in a database in the application's data directory; a
/// host with a project file implements this to have them travel with the project.
///
/// Keys are the kit's, and name the service: the strings of several services do not mix. Called on
/// the main thread. What it throws is shown to the user, and the share goes on.
class QUILLOHOSTKIT_API AssetStrings {
public:
    virtual ~AssetStrings();

    /// The string stored with the asset under `key`; none when there is none.
    [[nodiscard]] virtual std::optional<QString> Read(Asset const& asset, QString const& key) = 0;

    /// Stores `value` in its place; none removes it.
    virtual void Write(Asset const& asset, QString const& key,
                       std::optional<QString> const& value) = 0;
};

}  // namespace quillohostkit
