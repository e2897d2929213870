#pragma once

#include "moxcore/Export.h"
#include "moxcore/string/UTF16String.h"

namespace moxcore::utility::FileUtils {

/// `name` with every character that may not stand in a file name on one of the desktop systems
/// (control characters, U+007F, and any of / \ : * ? " < > |) replaced by `replacement`, one for
/// one, and cut to 251 bytes of UTF-8, never in the middle of a character: with an extension of
/// four it has the 255 that file systems take. Any thread.
[[nodiscard]] MOXCORE_API string::UTF16String ReplaceIllegalFileNameCharacters(
    string::UTF16String const& name, unsigned short replacement);

}  // namespace moxcore::utility::FileUtils
