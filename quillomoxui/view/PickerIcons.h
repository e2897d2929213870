#pragma once

#include "quillomoxui/properties/NamedPropertyHosts.h"

namespace quillomoxui::view {

// The pictures of the pickers' rows, shared by all rows. Main thread.

[[nodiscard]] PictureSupplyHandler const& ProjectIcon();
/// Leads from a project to its folders, and back.
[[nodiscard]] PictureSupplyHandler const& ForwardChevron();
[[nodiscard]] PictureSupplyHandler const& BackChevron();

}  // namespace quillomoxui::view
