#include "quillosdk/Accounts.h"

#include <utility>

#include "quillosdk/AnswerReader.h"
#include "quillosdk/Deliver.h"
#include "quillosdk/Session.h"

namespace quillosdk {

Accounts::Accounts(std::shared_ptr<Session> session) : session(std::move(session)) {}

moxcore::async::Future<std::shared_ptr<GetCurrentUserResponse>> Accounts::GetCurrentUser(
    GetCurrentUserRequest const&) {
    return FetchWithRetries<GetCurrentUserResponse>(
        *session, {.method = "GET", .url = "/v1/me"},
        {quillocommon::Step::ReadUser, "read who is signed in"}, &ReadUser);
}

moxcore::async::Future<std::shared_ptr<GetCurrentUserAccountListResponse>>
Accounts::GetCurrentUserAccountList(GetCurrentUserAccountListRequest const&) {
    return FetchWithRetries<GetCurrentUserAccountListResponse>(
        *session, {.method = "GET", .url = "/v1/accounts"},
        {quillocommon::Step::ReadLocations, "read the accounts"}, &ReadAccounts);
}

}  // namespace quillosdk
