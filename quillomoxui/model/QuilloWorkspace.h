#pragma once

#include "quillomoxui/model/QuilloNode.h"

namespace quillomoxui {

/// A workspace of an account.
class QUILLO_API QuilloWorkspace : public QuilloNode, public ProjectsNotifyingPropertyHost {
public:
    /// `parent` may be null and never changes.
    explicit QuilloWorkspace(std::shared_ptr<QuilloNode> const& parent)
        : QuilloNode(NodeKind::Workspace, parent) {}
    ~QuilloWorkspace() override;

    [[nodiscard]] NodeVector<QuilloNode> GetChildNodes() const override;
    [[nodiscard]] UTF16String GetTypeAbbreviation() const override;

    /// Keeps the projects sorted by name and has every one fetch its children. None may be null.
    void SetProjects(NodeVector<QuilloProject> const& projects) override;
};

}  // namespace quillomoxui
