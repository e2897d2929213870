#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "moxcore/Export.h"
#include "moxcore/string/UTF16String.h"

namespace moxcore::string {

// Conversions between the core library's text and UTF-8. What is not valid in the source becomes
// U+FFFD in the result; only a text of 2 GiB or more is refused (std::length_error). Any thread.

/// ASCII literal to text; a byte above 0x7F becomes U+FFFD.
[[nodiscard]] MOXCORE_API UTF16String AsciiToUTF16(std::string_view ascii);

[[nodiscard]] MOXCORE_API UTF16String UTF8to16(std::string_view utf8);
[[nodiscard]] MOXCORE_API std::string UTF16to8(UTF16String const& text);

/// `text`, or of one with more than `most` characters (code points) the beginning and "…", `most`
/// at the most together. It is cut where what a reader sees as one character ends.
[[nodiscard]] MOXCORE_API UTF16String Shorten(UTF16String text, std::size_t most);

/// The names under which the service's libraries know the two conversions above.
[[nodiscard]] inline UTF16String StdToUTF16String(std::string const& utf8) {
    return UTF8to16(utf8);
}
[[nodiscard]] inline std::string UTF16toStdString(UTF16String const& text) {
    return UTF16to8(text);
}

}  // namespace moxcore::string
