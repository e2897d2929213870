#pragma once

#include <cstddef>

#include "moxcore/Export.h"
#include "moxcore/string/UTF16String.h"

namespace moxcore::utility::FileUtils {

/// `name` with every character that may not stand in a file name on one of the desktop systems
/// (control characters, U+007F, and any of / \ : * ? " < > |) replaced by `replacement`, one for
/// one. Any thread.
[[nodiscard]] MOXCORE_API string::UTF16String ReplaceIllegalFileNameCharacters(
    string::UTF16String const& name, unsigned short replacement);

/// The beginning of `name` that takes at most `bytes` bytes of UTF-8, which is what the systems
/// that count bytes keep names in. Never half a character. Any thread.
[[nodiscard]] MOXCORE_API string::UTF16String ShortenFileName(string::UTF16String const& name,
                                                              std::size_t bytes);

}  // namespace moxcore::utility::FileUtils
