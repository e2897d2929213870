#include "moxworkspace/workspace/WorkspaceUtils.h"

namespace moxworkspace::workspace {
namespace {

using moxcore::utility::RefCountedWeakPtr;
using moxui::ui::UI_Node;

RefCountedWeakPtr<UI_Node>& ModalDialogParent() {
    static RefCountedWeakPtr<UI_Node> parent;
    return parent;
}

}  // namespace

boost::intrusive_ptr<UI_Node> WorkspaceUtils::GetModalDialogParentNode() {
    return ModalDialogParent().Lock();
}

void WorkspaceUtils::SetModalDialogParentNode(boost::intrusive_ptr<UI_Node> const& node) {
    ModalDialogParent() = RefCountedWeakPtr<UI_Node>(node.get());
}

}  // namespace moxworkspace::workspace
