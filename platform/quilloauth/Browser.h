#pragma once

#include <functional>
#include <string>

#include "quillocommon/Export.h"

namespace quilloauth {

// How the page is shown on which the user signs in. Any thread.

/// Hears why a page could not be shown: the end of a sentence, without a full stop.
using BrowserFailure = std::function<void(std::string const& why)>;

/// Has a browser show `url`, without waiting for it. `onFailure` may be called within the call or
/// any time later, on any thread, also when nobody waits for the page any more. The URL belongs to
/// the user who signs in: it must not be logged.
using BrowserOpener = std::function<void(std::string const& url, BrowserFailure const& onFailure)>;

/// The program that shows a page in the browser that the desktop's user has chosen.
inline constexpr char kDesktopOpener[] = "xdg-open";

/// Puts `opener` in place of the desktop's, which runs kDesktopOpener; an empty one brings that
/// back.
QUILLOSERVICES_API void SetBrowserOpener(BrowserOpener opener);

/// Opens `url` as the opener that is set does.
void OpenBrowser(std::string const& url, BrowserFailure const& onFailure);

/// A BrowserOpener's work: runs `program`, which is looked up in PATH unless it holds a "/", with
/// `url` as its one argument, without a shell and in a session of its own, so that it outlives this
/// process. It has failed when it cannot be run or ends with another exit status than 0.
QUILLOSERVICES_API void OpenWithProgram(std::string const& program, std::string const& url,
                                        BrowserFailure const& onFailure);

}  // namespace quilloauth
