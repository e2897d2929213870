#pragma once

#include "quillomoxui/model/QuilloNode.h"

namespace quillomoxui {

/// An account that the user belongs to.
class QUILLO_API QuilloAccount : public QuilloNode,
                                 public WorkspacesNotifyingPropertyHost,
                                 public IconNotifyingPropertyHost {
public:
    using QuilloNode::QuilloNode;
    ~QuilloAccount() override;

    [[nodiscard]] NodeVector<QuilloNode> GetChildNodes() const override;
    [[nodiscard]] UTF16String GetTypeAbbreviation() const override;

    /// Keeps the workspaces sorted by name and has every one fetch its children. None may be null.
    void SetWorkspaces(NodeVector<QuilloWorkspace> const& workspaces) override;
};

}  // namespace quillomoxui
