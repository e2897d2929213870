#pragma once

#include <string>

#include "moxcore/utility/Allocator.h"

namespace moxcore::string {

/// Text in 16-bit code units. The only form in which names, paths and texts cross the library's
/// interfaces; it may hold unpaired surrogates, which the conversions replace by U+FFFD.
using UTF16String = std::basic_string<unsigned short, std::char_traits<unsigned short>,
                                      utility::Allocator<unsigned short>>;

}  // namespace moxcore::string
