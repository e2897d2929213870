#include "quillomoxui/model/QuilloNode.h"

#include <utility>

#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloProject.h"

namespace quillomoxui {

QuilloNode::QuilloNode(std::shared_ptr<QuilloNode> const& parent)
    : QuilloNode(NodeKind::Other, parent) {}

QuilloNode::QuilloNode(NodeKind kind, std::shared_ptr<QuilloNode> const& parent)
    : parent(parent), kind(kind) {}

QuilloNode::~QuilloNode() = default;

void QuilloNode::SetInitialIdentity(moxcore::utility::Guid const& id, UTF16String name) {
    SetInitialID(id);
    NameNotifyingPropertyHost::SetInitialValue(std::move(name));
}

void QuilloNode::FetchChildren() {
    SetFetchChildrenState(FetchChildrenState::Fetching);
}

std::shared_ptr<QuilloNode> QuilloNode::GetParent() const {
    return parent.lock();
}

template <class T>
std::shared_ptr<T> QuilloNode::FindSelfOrAncestorOfType() {
    for (auto current = Share(this); current; current = current->GetParent())
        if (auto found = NodeAs<T>(current)) return found;
    return nullptr;
}

template QUILLO_API std::shared_ptr<QuilloAccount> QuilloNode::FindSelfOrAncestorOfType();
template QUILLO_API std::shared_ptr<QuilloProject> QuilloNode::FindSelfOrAncestorOfType();

}  // namespace quillomoxui
