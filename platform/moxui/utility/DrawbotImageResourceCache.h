#pragma once

namespace moxui::utility {

/// A place to keep pictures in for whoever does not want them kept by the resource manager. The
/// resource managers keep theirs, and need none.
class DrawbotImageResourceCache;

}  // namespace moxui::utility
