#pragma once

#include "host/media/MovieProbe.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"

namespace quillohost::editor {

/// The picture that stands for a movie's kind: one with pictures, or sound alone. Main thread.
[[nodiscard]] quillomoxui::PictureSupplyHandler AssetIcon(Movie const& movie);

}  // namespace quillohost::editor
