#pragma once

#include "moxcore/utility/RefCountedObjectWithWeakPtr.h"

namespace moxui::drawbot {

/// A picture that can be drawn. Held by boost::intrusive_ptr.
class ImageInterface : public moxcore::utility::RefCountedObjectWithWeakPtr {};

}  // namespace moxui::drawbot
