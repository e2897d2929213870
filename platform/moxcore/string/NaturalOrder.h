#pragma once

#include <cstddef>
#include <vector>

#include "moxcore/Export.h"
#include "moxcore/string/UTF16String.h"

namespace moxcore::string::CaseInsensitive {

/// Natural order: letter case is ignored and a run of decimal digits counts as one number, so that
/// "shot 2" comes before "Shot 10". Collates as the Unicode root locale does, accents included. A
/// strict weak order; names that differ only in case are equal. Any thread.
[[nodiscard]] MOXCORE_API bool NaturalStringLessThan(UTF16String const& a, UTF16String const& b);

/// The order in which `names` stand when sorted by NaturalStringLessThan: the positions of the
/// names, first to last; equal names keep no particular order. The pointers must not be null. Makes
/// each name's collation key once, so it is far cheaper than sorting with the comparison above. Any
/// thread.
[[nodiscard]] MOXCORE_API std::vector<std::size_t> NaturalOrder(
    std::vector<UTF16String const*> const& names);

}  // namespace moxcore::string::CaseInsensitive
