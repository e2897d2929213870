#include "quillomoxui/view/AccountSelectorView.h"

#include <algorithm>

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

/// Makes the entries those of the accounts. One that stays is left alone: the menu may be open, and
/// the user about to choose it.
void AccountSelectorView::UpdateItems() {
    std::vector<Item> wanted;
    for (auto const& account : accounts)
        wanted.push_back({account->GetID(), account->GetName()});
    auto const remove = [this](std::size_t row) {
        DeleteItem(static_cast<int>(row));
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(row));
    };
    for (auto row = items.size(); row-- > 0;)
        if (std::find(wanted.begin(), wanted.end(), items[row]) == wanted.end()) remove(row);
    for (std::size_t row = 0; row < wanted.size(); ++row) {
        if (row < items.size() && items[row] == wanted[row]) continue;
        InsertItemWithCustomIcon(static_cast<int>(row), wanted[row].name);
        items.insert(items.begin() + static_cast<std::ptrdiff_t>(row), wanted[row]);
    }
    while (items.size() > wanted.size())
        remove(items.size() - 1);
}

void AccountSelectorView::PopulateAccountSelector() {
    UpdateItems();
    auto const proposed = GetProposedAccountGuid();
    int value = 0;
    for (std::size_t i = 0; i < accounts.size(); ++i) {
        if (accounts[i]->GetID() == proposed) value = static_cast<int>(i);
    }
    SetValue(value);
    // A list that was fetched again has new objects, and may lack the account: the projects that
    // are shown must be those of the account that the menu shows.
    if (!accounts.empty())
        proposedAccount->SetProposedAccount(accounts[static_cast<std::size_t>(value)]);
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
