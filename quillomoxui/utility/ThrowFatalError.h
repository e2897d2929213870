#pragma once

namespace quillomoxui {

/// Reports a broken contract with `message`, a localizable text ("key=default"), through the core
/// library's error report. Does not return.
[[noreturn]] void ThrowFatalError(char const* message);

}  // namespace quillomoxui
