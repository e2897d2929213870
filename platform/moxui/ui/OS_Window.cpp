#include "moxui/ui/OS_Window.h"

#include "moxui/ui/UI_Node.h"

namespace moxui::ui {

OS_Window::OS_Window(UI_Node* node) : node(node) {}

boost::intrusive_ptr<UI_Node> OS_Window::GetNode() const {
    return node.Lock();
}

}  // namespace moxui::ui
