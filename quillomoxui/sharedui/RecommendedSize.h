#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include "moxcore/geom/Point.h"
#include "moxui/ui/UI_Node.h"
#include "quillomoxui/Export.h"

namespace quillomoxui {

/// The size that `node` (not null) would like, in whole units, rounded up. Also for a node that is
/// in no window yet. Main thread.
[[nodiscard]] QUILLO_API moxcore::geom::PointT<float> GetRecommendedSize(
    boost::intrusive_ptr<moxui::ui::UI_Node> const& node);

}  // namespace quillomoxui
