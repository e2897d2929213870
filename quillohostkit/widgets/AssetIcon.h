#pragma once

#include "quillohostkit/Export.h"
#include "quillohostkit/media/MovieProbe.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"

namespace quillohostkit {

/// The picture that stands for a movie's kind: one with pictures, or sound alone. Main thread.
[[nodiscard]] QUILLOHOSTKIT_API quillomoxui::PictureSupplyHandler AssetIcon(Movie const& movie);

}  // namespace quillohostkit
