#pragma once

#include "quillomoxui/model/QuilloNode.h"

namespace quillomoxui {

/// A file in a folder. A leaf: asking for its children finds them fetched.
class QUILLO_API QuilloFile : public QuilloNode {
public:
    /// `parent` may be null and never changes.
    explicit QuilloFile(std::shared_ptr<QuilloNode> const& parent)
        : QuilloNode(NodeKind::File, parent) {}
    ~QuilloFile() override;

    [[nodiscard]] NodeVector<QuilloNode> GetChildNodes() const override;
    void FetchChildren() override;
    [[nodiscard]] UTF16String GetTypeAbbreviation() const override;
};

}  // namespace quillomoxui
