#pragma once

#include <optional>
#include <string>

#include "quilloclient/ListCache.h"

namespace quillo {

/// Which list the data of a "changed" event names; none when it is one that nobody here reads, or
/// no such data. Any thread.
[[nodiscard]] std::optional<ListCache::Key> ReadChangeNotice(std::string const& data);

}  // namespace quillo
