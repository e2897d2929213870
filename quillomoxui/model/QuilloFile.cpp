#include "quillomoxui/model/QuilloFile.h"

#include "moxcore/string/Conversions.h"

namespace quillomoxui {

QuilloFile::~QuilloFile() = default;

NodeVector<QuilloNode> QuilloFile::GetChildNodes() const {
    return {};
}

void QuilloFile::FetchChildren() {
    SetFetchChildrenState(FetchChildrenState::Fetched);
}

UTF16String QuilloFile::GetTypeAbbreviation() const {
    return moxcore::string::AsciiToUTF16(TextsOf(GetKind()).abbreviation);
}

}  // namespace quillomoxui
