#include "quillomoxui/view/AccountSelectorView.h"

#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/utility/GetResourceManager.h"
#include "quillomoxui/utility/WeakBindMemberFunction.h"
#include "quillomoxui/view/Texts.h"

namespace quillomoxui::view {

AccountSelectorView::AccountSelectorView(
    std::shared_ptr<ProposedAccountNotifyingPropertyHost> const& proposedAccount)
    : UI_Popup(0, false), proposedAccount(proposedAccount) {
    UI_SetAccessibleName(Text("$$$/Vistrel/quillomoxui/view/LocationPicker/Account=Account"));
    NotifyWhenChanged(
        utility::WeakBindMemberFunction(this, &AccountSelectorView::OnProposedAccountChanged));
}

AccountSelectorView::~AccountSelectorView() = default;

void AccountSelectorView::SetAccountVector(NodeVector<QuilloAccount> const& newAccounts) {
    accounts = newAccounts;
    PopulateAccountSelector();
    SetCustomAccountIcons();
    EnableAllItems();
}

void AccountSelectorView::PopulateAccountSelector() {
    DeleteAllItems();
    auto const proposed = GetProposedAccountGuid();
    int value = 0;
    for (std::size_t i = 0; i < accounts.size(); ++i) {
        AddItemWithCustomIcon(accounts[i]->GetName());
        if (accounts[i]->GetID() == proposed) value = static_cast<int>(i);
    }
    SetValue(value);
    if (accounts.empty()) return;

    // A list that was fetched again has new objects: what is shown must follow the one in it.
    if (proposed.IsNull()) return;
    auto const& shown = accounts[static_cast<std::size_t>(value)];
    if (shown->GetID() == proposed) proposedAccount->SetProposedAccount(shown);
}

moxcore::utility::Guid AccountSelectorView::GetProposedAccountGuid() {
    auto proposed = proposedAccount->GetProposedAccount();
    if (!proposed && !accounts.empty()) {
        proposed = accounts.front();
        proposedAccount->SetProposedAccount(proposed);
    }
    return proposed ? proposed->GetID() : moxcore::utility::Guid();
}

void AccountSelectorView::SetCustomAccountIcons() {
    moxcore::utility::RefCountedWeakPtr<AccountSelectorView const> const weakSelf(this);
    SetCustomIconMenuItemImageFunction(
        [weakSelf](moxui::controls::UI_PictureSupplyMessage* message, int index) {
            if (auto const self = weakSelf.Lock()) self->GetAccountItemImage(message, index);
        });
}

void AccountSelectorView::GetAccountItemImage(moxui::controls::UI_PictureSupplyMessage* message,
                                              int index) const {
    if (index >= 0 && static_cast<std::size_t>(index) < accounts.size())
        message->SetIcon("QuilloInlineLogo_Lg", &utility::GetResourceManager(), true, nullptr);
}

void AccountSelectorView::OnProposedAccountChanged(moxui::ui::Message*) {
    auto const value = static_cast<std::size_t>(GetValue());
    proposedAccount->SetProposedAccount(value < accounts.size() ? accounts[value] : nullptr);
}

}  // namespace quillomoxui::view
