#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <string>

#include "moxcore/string/Conversions.h"
#include "moxui/ui/UI_Container.h"

namespace testsupport {

/// Calls `visit` with every node below `node` that is a View, in the order of drawing.
template <class View, class Visit>
void ForEach(moxui::ui::UI_Container const& node, Visit const& visit) {
    for (auto child = node.ChildBegin(); child != node.ChildEnd(); ++child) {
        if (auto* const view = dynamic_cast<View*>(child->get())) visit(*view);
        if (auto* const container = dynamic_cast<moxui::ui::UI_Container*>(child->get()))
            ForEach<View, Visit>(*container, visit);
    }
}

/// The first View below `node`; null when there is none.
template <class View>
boost::intrusive_ptr<View> Find(moxui::ui::UI_Container const& node) {
    boost::intrusive_ptr<View> found;
    ForEach<View>(node, [&](View& view) {
        if (!found) found = &view;
    });
    return found;
}

/// The first View below `node` that shows `text`; null when there is none.
template <class View>
boost::intrusive_ptr<View> FindText(moxui::ui::UI_Container const& node, std::string const& text) {
    boost::intrusive_ptr<View> found;
    ForEach<View>(node, [&](View& view) {
        if (!found && moxcore::string::UTF16to8(view.GetText()) == text) found = &view;
    });
    return found;
}

}  // namespace testsupport
