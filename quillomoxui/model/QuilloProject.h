#pragma once

#include "quillomoxui/model/QuilloNode.h"

namespace quillomoxui {

/// A project of a workspace. Its only child is its root folder.
class QUILLO_API QuilloProject : public QuilloNode, public RootFolderNotifyingPropertyHost {
public:
    /// `parent` may be null and never changes.
    explicit QuilloProject(std::shared_ptr<QuilloNode> const& parent)
        : QuilloNode(NodeKind::Project, parent) {}
    ~QuilloProject() override;

    [[nodiscard]] NodeVector<QuilloNode> GetChildNodes() const override;
    [[nodiscard]] UTF16String GetTypeAbbreviation() const override;

    /// A null root folder breaks the contract. The folder's children are not fetched.
    void SetRootFolder(std::shared_ptr<QuilloFolder> const& root) override;
};

}  // namespace quillomoxui
