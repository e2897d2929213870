#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <functional>
#include <string>
#include <vector>

#include "moxcore/geom/Point.h"
#include "moxui/controls/UI_ControlView.h"
#include "moxui/controls/UI_PictureSupplyMessage.h"

namespace quillogallery {

/// One control as the gallery shows it.
struct Specimen {
    std::string name;
    /// Makes a new one, not in any window yet.
    std::function<boost::intrusive_ptr<moxui::controls::UI_ControlView>()> make;
    /// Its size; what is 0 is the control's own wish.
    moxcore::geom::PointT<float> size;
    /// Whether it is worked at all; one that is only looked at has fewer states.
    bool worked = true;
    /// Whether a press of the mouse shows something while it is held, and opens nothing.
    bool pressed = true;
    /// Brings it into its checked state; empty for one that has none.
    std::function<void(moxui::controls::UI_ControlView&)> check;
};

/// Specimens that are shown on one sheet.
struct Kind {
    std::string name;
    std::vector<Specimen> specimens;
};

[[nodiscard]] Kind Texts();
[[nodiscard]] Kind Buttons();
[[nodiscard]] Kind Menus();
[[nodiscard]] Kind Lists();

/// Answers a control's question for its picture with one of the toolkit's own.
[[nodiscard]] moxui::controls::PictureSupplyFunction Icon(std::string const& name);

}  // namespace quillogallery
