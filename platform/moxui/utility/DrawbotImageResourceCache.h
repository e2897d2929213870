#pragma once

namespace moxui::utility {

/// A cache of pictures for callers that do not want the resource manager to keep them. The
/// resource managers keep theirs, and need none.
class DrawbotImageResourceCache;

}  // namespace moxui::utility
