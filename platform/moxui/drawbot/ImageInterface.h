#pragma once

#include "moxcore/geom/Point.h"
#include "moxcore/utility/RefCountedObjectWithWeakPtr.h"

namespace moxui::drawbot {

/// A picture that can be drawn. Held by boost::intrusive_ptr.
class ImageInterface : public moxcore::utility::RefCountedObjectWithWeakPtr {
public:
    /// The size at which it is drawn at scale 1, in whole units; it is sharp at any scale.
    [[nodiscard]] virtual moxcore::geom::PointT<int> GetSize() const = 0;
};

}  // namespace moxui::drawbot
