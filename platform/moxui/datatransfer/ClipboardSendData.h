#pragma once

#include <memory>
#include <optional>

#include "moxcore/string/UTF16String.h"
#include "moxui/Export.h"

namespace moxui::datatransfer {

/// The data to put on a clipboard. Main thread.
class MOXUI_API ClipboardSendData {
public:
    ClipboardSendData();
    ~ClipboardSendData();

    /// Takes the place of a text put before.
    void PutText(moxcore::string::UTF16String const& text);

    /// Puts what was put here on the system's clipboard, exactly as it is, in place of what is
    /// there; nothing when nothing was put here.
    void SendToSystemClipboard() const;

private:
    std::optional<moxcore::string::UTF16String> text;
};

[[nodiscard]] MOXUI_API std::unique_ptr<ClipboardSendData> NewClipboardSendData();

}  // namespace moxui::datatransfer
