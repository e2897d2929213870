#include "quillomoxui/model/QuilloUser.h"

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/ChildNodes.h"
#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"

namespace quillomoxui {

namespace {

UTF16String const& PathSeparator() {
    static UTF16String const separator = moxcore::string::AsciiToUTF16("/");
    return separator;
}

}  // namespace

QuilloUser::QuilloUser() : QuilloNode(NodeKind::User, nullptr) {}

QuilloUser::~QuilloUser() = default;

NodeVector<QuilloNode> QuilloUser::GetChildNodes() const {
    return JoinNodes(GetAccounts());
}

UTF16String QuilloUser::GetTypeAbbreviation() const {
    return moxcore::string::AsciiToUTF16(TextsOf(GetKind()).abbreviation);
}

void QuilloUser::SetSelection(std::shared_ptr<QuilloFolder> const& folder) {
    PutSelection(folder, {});
}

void QuilloUser::LoseSelection() {
    PutSelection(nullptr, GetSelectionPath());
}

UTF16String QuilloUser::GetLostSelectionPath() const {
    std::lock_guard lock(mutex);
    return lostSelectionPath;
}

void QuilloUser::PutSelection(std::shared_ptr<QuilloFolder> const& folder,
                              UTF16String const& lostPath) {
    // From none to none is no change: a loss stays known until the next selection.
    if (folder || GetSelection()) {
        std::lock_guard lock(mutex);
        lostSelectionPath = lostPath;
    }
    SelectionNotifyingPropertyHost::SetValue(folder);
    SelectionPathNotifyingPropertyHost::SetValue(ConstructSelectionPath(folder));
}

void QuilloUser::SetAccounts(NodeVector<QuilloAccount> const& accounts) {
    NoteListed(accounts);
    AccountsNotifyingPropertyHost::ReplaceValue(SortNodes(accounts));
    FetchChildrenOfEach(accounts);
}

UTF16String QuilloUser::ConstructSelectionPath(std::shared_ptr<QuilloNode> const& node) {
    if (!node) return PathSeparator();

    auto const project = node->FindSelfOrAncestorOfType<QuilloProject>();
    std::shared_ptr<QuilloNode> const root = project ? project->GetRootFolder() : nullptr;

    UTF16String path;
    if (node != root) path = PathSeparator() + node->GetName();
    for (auto current = node->GetParent(); current;) {
        auto const parent = current->GetParent();
        if (NodeAs<QuilloAccount>(parent)) return current->GetName() + path;
        if (current != root) path.insert(0, PathSeparator() + current->GetName());
        current = parent;
    }
    return PathSeparator();
}

std::shared_ptr<QuilloAccount> QuilloUser::GetAccountFor(
    std::shared_ptr<QuilloNode> const& node) const {
    return node ? node->FindSelfOrAncestorOfType<QuilloAccount>() : nullptr;
}

}  // namespace quillomoxui
