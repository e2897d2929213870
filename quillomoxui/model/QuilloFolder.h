#pragma once

#include "quillomoxui/model/QuilloNode.h"

namespace quillomoxui {

/// A folder of a project, its root folder included. Its children are fetched when somebody opens
/// it. The setters keep their nodes sorted by name; none may be null.
class QUILLO_API QuilloFolder : public QuilloNode,
                                public FoldersNotifyingPropertyHost,
                                public FilesNotifyingPropertyHost,
                                public VersionStacksNotifyingPropertyHost {
public:
    /// `parent` may be null and never changes.
    explicit QuilloFolder(std::shared_ptr<QuilloNode> const& parent)
        : QuilloNode(NodeKind::Folder, parent) {}
    ~QuilloFolder() override;

    /// Files, then version stacks, then folders.
    [[nodiscard]] NodeVector<QuilloNode> GetChildNodes() const override;
    [[nodiscard]] UTF16String GetTypeAbbreviation() const override;

    /// Replaces the folders: sorted by name, and listed (HasBeenListed) from then on.
    void SetFolders(NodeVector<QuilloFolder> const& folders) override;
    /// As SetFolders.
    void SetVersionStacks(NodeVector<QuilloVersionStack> const& versionStacks) override;
    /// As SetFolders.
    void SetFiles(NodeVector<QuilloFile> const& files) override;
};

}  // namespace quillomoxui
