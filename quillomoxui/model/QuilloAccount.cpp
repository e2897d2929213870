#include "quillomoxui/model/QuilloAccount.h"

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/ChildNodes.h"
#include "quillomoxui/model/QuilloWorkspace.h"

namespace quillomoxui {

QuilloAccount::~QuilloAccount() = default;

NodeVector<QuilloNode> QuilloAccount::GetChildNodes() const {
    return JoinNodes(GetWorkspaces());
}

UTF16String QuilloAccount::GetTypeAbbreviation() const {
    return moxcore::string::AsciiToUTF16(TextsOf(GetKind()).abbreviation);
}

void QuilloAccount::SetWorkspaces(NodeVector<QuilloWorkspace> const& workspaces) {
    NoteListed(workspaces);
    WorkspacesNotifyingPropertyHost::ReplaceValue(SortNodes(workspaces));
    FetchChildrenOfEach(workspaces);
}

}  // namespace quillomoxui
