#pragma once

#include <memory>
#include <vector>

#include "moxcore/async/Future.h"
#include "quillosdk/Records.h"
#include "quillosdk/ResponseWith.h"

namespace quillosdk {

class Session;

struct GetCurrentUserRequest {};

class GetCurrentUserResponse : public ResponseWith<User> {
public:
    using ResponseWith::ResponseWith;
    [[nodiscard]] User const& GetUserObject() const { return content; }
};

struct GetCurrentUserAccountListRequest {};

class GetCurrentUserAccountListResponse : public ResponseWith<std::vector<Account>> {
public:
    using ResponseWith::ResponseWith;
    [[nodiscard]] std::vector<Account> const& GetCurrentUserAccountListObject() const {
        return content;
    }
};

/// The signed-in user and the accounts that he belongs to. Answers come on the transport's thread;
/// a request that the service refuses for now is repeated (see RetryPolicy). An answer that cannot
/// be read fails the future. Any thread.
class QUILLOSERVICES_API Accounts {
public:
    explicit Accounts(std::shared_ptr<Session> session);

    moxcore::async::Future<std::shared_ptr<GetCurrentUserResponse>> GetCurrentUser(
        GetCurrentUserRequest const& request);

    moxcore::async::Future<std::shared_ptr<GetCurrentUserAccountListResponse>>
    GetCurrentUserAccountList(GetCurrentUserAccountListRequest const& request);

private:
    std::shared_ptr<Session> session;
};

}  // namespace quillosdk
