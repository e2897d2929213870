#pragma once

#include <QString>

#include "quillohostkit/Asset.h"

namespace quillohostkit {

/// The name under which the asset is shared: its title, or else its file's name, without the
/// extension of a movie. Any thread.
[[nodiscard]] QString TitleOf(Asset const& asset);

/// Differs once the asset has changed. Any thread.
[[nodiscard]] QString RevisionOf(Asset const& asset);

}  // namespace quillohostkit
