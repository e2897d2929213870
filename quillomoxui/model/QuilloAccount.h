#pragma once

#include "quillomoxui/model/QuilloNode.h"

namespace quillomoxui {

/// An account that the user belongs to.
class QUILLO_API QuilloAccount : public QuilloNode,
                                 public WorkspacesNotifyingPropertyHost,
                                 public IconNotifyingPropertyHost {
public:
    /// `parent` may be null and never changes.
    explicit QuilloAccount(std::shared_ptr<QuilloNode> const& parent)
        : QuilloNode(NodeKind::Account, parent) {}
    ~QuilloAccount() override;

    [[nodiscard]] NodeVector<QuilloNode> GetChildNodes() const override;
    [[nodiscard]] UTF16String GetTypeAbbreviation() const override;

    /// Keeps the workspaces sorted by name and has every one fetch its children. None may be null.
    void SetWorkspaces(NodeVector<QuilloWorkspace> const& workspaces) override;
};

}  // namespace quillomoxui
