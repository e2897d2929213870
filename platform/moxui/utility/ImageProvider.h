#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <string>

#include "moxui/Export.h"
#include "moxui/drawbot/ImageInterface.h"
#include "moxui/utility/DrawbotImageResourceCache.h"

namespace moxui::utility {

/// Finds the pictures of the theme. Main thread.
class MOXUI_API ImageProvider {
public:
    /// The toolkit's picture `name` in the colours of the theme in force, or null when there is
    /// none. `cache` and `flags` have no meaning here: pass null and 0.
    [[nodiscard]] boost::intrusive_ptr<drawbot::ImageInterface> GetThemeImage(
        std::string const& name, DrawbotImageResourceCache* cache, unsigned flags) const;
};

}  // namespace moxui::utility
