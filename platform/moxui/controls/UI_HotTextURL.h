#pragma once

#include <functional>

#include "moxui/controls/UI_HotTextButton.h"

namespace moxui::controls {

/// A text that opens a web address in the system's browser when it is pressed. Its text and its
/// address are set apart. Main thread.
class MOXUI_API UI_HotTextURL : public UI_HotTextButton {
public:
    explicit UI_HotTextURL(moxcore::string::UTF16String const& text = {});
    ~UI_HotTextURL() override;

    /// Any text may be set; a press opens it only when it is an http or https address with a host,
    /// and does nothing (traced) otherwise.
    void SetURL(moxcore::string::UTF16String const& newURL);
    /// As it was given.
    [[nodiscard]] moxcore::string::UTF16String const& GetURL() const { return url; }

    /// Has `opener` open the addresses, of all links of the process, in place of the system's
    /// browser; an empty one gives them back to the browser. It must return soon. What
    /// it throws is reported, as what a handler of a button throws is.
    using Opener = std::function<void(moxcore::string::UTF16String const& url)>;
    static void SetOpener(Opener opener);

protected:
    void OnPressed() override;

private:
    moxcore::string::UTF16String url;
};

}  // namespace moxui::controls
