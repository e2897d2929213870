#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "quillohostkit/Export.h"

namespace quillohostkit {

// Names and messages come from the service and from files; what could steer a terminal, or show a
// text as another one, is made visible. Any thread.

/// `text` fit to be shown as one line: each control character, each character that turns the
/// direction of writing, and each byte that is no UTF-8 is replaced by U+FFFD.
[[nodiscard]] QUILLOHOSTKIT_API std::string OneLine(std::string_view text);

/// `text` with what `replace` answers in the place of each such character; it is called with the
/// code point, or a negative number for what is no UTF-8.
[[nodiscard]] QUILLOHOSTKIT_API std::string ReplaceUnsafe(
    std::string_view text, std::function<std::string(int codePoint)> const& replace);

/// Whether `text` is an http or https address that a shell and a terminal take as it stands:
/// printable ASCII without blanks, with a host and without a user.
[[nodiscard]] QUILLOHOSTKIT_API bool IsPlainLink(std::string_view text);

}  // namespace quillohostkit
