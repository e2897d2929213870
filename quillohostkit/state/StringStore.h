#pragma once

#include <optional>
#include <string>

#include "moxcore/utility/Guid.h"
#include "quillohostkit/Export.h"

namespace quillohostkit {

/// The two Guids by which the library names an asset.
struct AssetID {
    moxcore::utility::Guid store;  ///< of the store that has named it
    moxcore::utility::Guid asset;

    friend auto operator<=>(AssetID const&, AssetID const&) = default;
};

/// Strings stored with assets, for one service. Any thread.
class QUILLOHOSTKIT_API StringStore {
public:
    virtual ~StringStore();

    [[nodiscard]] virtual std::optional<std::string> Read(AssetID const& asset,
                                                          std::string const& key) = 0;
    virtual void Write(AssetID const& asset, std::string const& key, std::string const& value) = 0;
    virtual void Forget(AssetID const& asset, std::string const& key) = 0;
};

/// The keys of the kit's own strings; the library's are in AssetDataKeys.h.
namespace stringkeys {
inline constexpr char kLocation[] = "quillohostkit.Location";  ///< shared to last: IDs, by blanks
inline constexpr char kVersions[] = "quillohostkit.Versions";  ///< version stack, blank, count
}  // namespace stringkeys

}  // namespace quillohostkit
