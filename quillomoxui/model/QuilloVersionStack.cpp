#include "quillomoxui/model/QuilloVersionStack.h"

#include "moxcore/string/Conversions.h"

namespace quillomoxui {

QuilloVersionStack::~QuilloVersionStack() = default;

NodeVector<QuilloNode> QuilloVersionStack::GetChildNodes() const {
    return {};
}

void QuilloVersionStack::FetchChildren() {
    SetFetchChildrenState(FetchChildrenState::Fetched);
}

UTF16String QuilloVersionStack::GetTypeAbbreviation() const {
    return moxcore::string::AsciiToUTF16(TextsOf(GetKind()).abbreviation);
}

}  // namespace quillomoxui
