#include "quillomoxui/model/QuilloFolder.h"

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/ChildNodes.h"
#include "quillomoxui/model/QuilloFile.h"
#include "quillomoxui/model/QuilloVersionStack.h"

namespace quillomoxui {

QuilloFolder::~QuilloFolder() = default;

NodeVector<QuilloNode> QuilloFolder::GetChildNodes() const {
    return JoinNodes(GetFiles(), GetVersionStacks(), GetFolders());
}

UTF16String QuilloFolder::GetTypeAbbreviation() const {
    return moxcore::string::AsciiToUTF16(TextsOf(GetKind()).abbreviation);
}

void QuilloFolder::SetFolders(NodeVector<QuilloFolder> const& folders) {
    NoteListed(folders);
    FoldersNotifyingPropertyHost::ReplaceValue(SortNodes(folders));
}

void QuilloFolder::SetVersionStacks(NodeVector<QuilloVersionStack> const& versionStacks) {
    VersionStacksNotifyingPropertyHost::ReplaceValue(SortNodes(versionStacks));
}

void QuilloFolder::SetFiles(NodeVector<QuilloFile> const& files) {
    FilesNotifyingPropertyHost::ReplaceValue(SortNodes(files));
}

}  // namespace quillomoxui
