#pragma once

#include "moxcore/utility/Guid.h"
#include "moxui/controls/UI_Popup.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"

namespace quillomoxui::view {

/// The menu of the user's accounts. Main thread.
class AccountSelectorView : public moxui::controls::UI_Popup {
public:
    /// The choice goes to `proposedAccount`, which is not null.
    explicit AccountSelectorView(
        std::shared_ptr<ProposedAccountNotifyingPropertyHost> const& proposedAccount);
    ~AccountSelectorView() override;

    /// Offers `accounts` in their order. When none is proposed, the first one is from then on; when
    /// the proposed one comes again as another object, that object is.
    void SetAccountVector(NodeVector<QuilloAccount> const& accounts);

private:
    void PopulateAccountSelector();
    /// Proposes the first account when none is proposed; the null Guid when there is none.
    [[nodiscard]] moxcore::utility::Guid GetProposedAccountGuid();
    void SetCustomAccountIcons();
    void GetAccountItemImage(moxui::controls::UI_PictureSupplyMessage* message, int index) const;
    void OnProposedAccountChanged(moxui::ui::Message* message);

    NodeVector<QuilloAccount> accounts;
    std::shared_ptr<ProposedAccountNotifyingPropertyHost> const proposedAccount;
};

}  // namespace quillomoxui::view
