#include "quillomoxui/model/QuilloProject.h"

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/utility/ThrowFatalError.h"

namespace quillomoxui {

QuilloProject::~QuilloProject() = default;

NodeVector<QuilloNode> QuilloProject::GetChildNodes() const {
    auto const root = GetRootFolder();
    return root ? NodeVector<QuilloNode>{root} : NodeVector<QuilloNode>{};
}

UTF16String QuilloProject::GetTypeAbbreviation() const {
    return moxcore::string::AsciiToUTF16(TextsOf(GetKind()).abbreviation);
}

void QuilloProject::SetRootFolder(std::shared_ptr<QuilloFolder> const& root) {
    if (!root)
        ThrowFatalError(
            "$$$/Vistrel/quillomoxui/viewmodel/QuilloShare/NoNullRootFolder="
            "Contract violation: RootFolder property may not be set to null.");
    NoteListed(*root);
    RootFolderNotifyingPropertyHost::SetValue(root);
}

}  // namespace quillomoxui
