#pragma once

#include "quillomoxui/model/QuilloNode.h"

namespace quillomoxui {

/// The versions of one asset, in a folder. A leaf: asking for its children finds them fetched.
class QUILLO_API QuilloVersionStack : public QuilloNode {
public:
    /// `parent` may be null and never changes.
    explicit QuilloVersionStack(std::shared_ptr<QuilloNode> const& parent)
        : QuilloNode(NodeKind::VersionStack, parent) {}
    ~QuilloVersionStack() override;

    [[nodiscard]] NodeVector<QuilloNode> GetChildNodes() const override;
    void FetchChildren() override;
    [[nodiscard]] UTF16String GetTypeAbbreviation() const override;
};

}  // namespace quillomoxui
