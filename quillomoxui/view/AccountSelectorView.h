#pragma once

#include <vector>

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

    /// Offers `accounts` in their order. When none is proposed, or one that is not among them, the
    /// first one is from then on; when the proposed one comes again as another object, that object
    /// is.
    void SetAccountVector(NodeVector<QuilloAccount> const& accounts);

private:
    void PopulateAccountSelector();
    void UpdateItems();
    /// Proposes the first account when none is proposed; the null Guid when there is none.
    [[nodiscard]] moxcore::utility::Guid GetProposedAccountGuid();
    void SetCustomAccountIcons();
    void GetAccountItemImage(moxui::controls::UI_PictureSupplyMessage* message, int index) const;
    void OnProposedAccountChanged(moxui::ui::Message* message);

    /// The account or workspace of a menu entry.
    struct Item {
        moxcore::utility::Guid id;
        UTF16String name;

        friend bool operator==(Item const&, Item const&) = default;
    };

    NodeVector<QuilloAccount> accounts;
    std::vector<Item> items;  // as the menu has them
    std::shared_ptr<ProposedAccountNotifyingPropertyHost> const proposedAccount;
};

}  // namespace quillomoxui::view
