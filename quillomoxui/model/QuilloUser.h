#pragma once

#include <mutex>

#include "quillomoxui/model/QuilloNode.h"

namespace quillomoxui {

/// The signed-in user, the root of the tree. An empty one, with the null ID, stands for nobody.
class QUILLO_API QuilloUser
    : public QuilloNode,
      public IconNotifyingPropertyHost,
      public ColorNotifyingPropertyHost,
      public AccountsNotifyingPropertyHost,
      public ProposedAccountNotifyingPropertyHost,    ///< chosen in the picker
      public ProposedSelectionNotifyingPropertyHost,  ///< highlighted in the picker
      public SelectionPathNotifyingPropertyHost,      ///< follows Selection
      public SelectionNotifyingPropertyHost {         ///< where a share goes
public:
    QuilloUser();
    ~QuilloUser() override;

    [[nodiscard]] NodeVector<QuilloNode> GetChildNodes() const override;
    [[nodiscard]] UTF16String GetTypeAbbreviation() const override;

    /// Sets the selection, then its path.
    void SetSelection(std::shared_ptr<QuilloFolder> const& folder) override;

    /// The folder that is selected is gone: there is no selection from now on.
    QUILLO_HIDDEN void LoseSelection();
    /// The path of the selection that was lost; empty once another one has been set.
    [[nodiscard]] UTF16String GetLostSelectionPath() const;

    /// Keeps the accounts sorted by name and has every one fetch its children. None may be null.
    void SetAccounts(NodeVector<QuilloAccount> const& accounts) override;

    /// The names from the workspace down to `node`, joined by "/", without the root folder's. "/"
    /// when `node` is null or does not lie below a workspace of an account.
    [[nodiscard]] UTF16String ConstructSelectionPath(std::shared_ptr<QuilloNode> const& node);

    /// The account that `node` is or lies in; null when there is none.
    [[nodiscard]] std::shared_ptr<QuilloAccount> GetAccountFor(
        std::shared_ptr<QuilloNode> const& node) const;

private:
    QUILLO_HIDDEN void PutSelection(std::shared_ptr<QuilloFolder> const& folder,
                                    UTF16String const& lostPath);

    mutable std::mutex mutex;
    UTF16String lostSelectionPath;  // guarded by mutex
};

}  // namespace quillomoxui
