#include "quillomoxui/model/QuilloWorkspace.h"

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/ChildNodes.h"
#include "quillomoxui/model/QuilloProject.h"

namespace quillomoxui {

QuilloWorkspace::~QuilloWorkspace() = default;

NodeVector<QuilloNode> QuilloWorkspace::GetChildNodes() const {
    return JoinNodes(GetProjects());
}

UTF16String QuilloWorkspace::GetTypeAbbreviation() const {
    return moxcore::string::AsciiToUTF16(TextsOf(GetKind()).abbreviation);
}

void QuilloWorkspace::SetProjects(NodeVector<QuilloProject> const& projects) {
    NoteListed(projects);
    ProjectsNotifyingPropertyHost::ReplaceValue(SortNodes(projects));
    FetchChildrenOfEach(projects);
}

}  // namespace quillomoxui
