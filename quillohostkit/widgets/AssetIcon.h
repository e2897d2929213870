#pragma once

#include "quillohostkit/Asset.h"
#include "quillohostkit/Export.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"

namespace quillohostkit {

/// The picture that stands for the asset's kind. Main thread.
[[nodiscard]] QUILLOHOSTKIT_API quillomoxui::PictureSupplyHandler AssetIcon(AssetKind kind);

}  // namespace quillohostkit
