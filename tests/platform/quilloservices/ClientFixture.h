#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quillosdk/QuilloClient.h"
#include "quillosdk/RetryPolicy.h"
#include "tests/support/FailureLog.h"
#include "tests/support/ManualExecutor.h"
#include "tests/support/ScriptedTransport.h"

namespace quillosdk {

inline constexpr char kID[] = "3f2504e0-4f89-41d3-9a0c-0305e82c3301";
inline quillocommon::Guid const kGuid{std::string_view(kID)};

/// A client with a token, before a service that the test plays.
class ClientFixture : public testing::Test {
protected:
    ClientFixture() {
        RetryPolicy::SetRandomSource([] { return 0.5; });
        static_cast<void>(client->UpdateAccessToken("the-first-token-1"));
    }
    ~ClientFixture() override { RetryPolicy::SetRandomSource({}); }

    /// The failures told since the last call.
    std::vector<quillocommon::Failure> NewFailures() {
        auto const all = failures.All();
        std::vector<quillocommon::Failure> fresh(all.begin() + static_cast<long>(seen), all.end());
        seen = all.size();
        return fresh;
    }

    testsupport::ManualExecutor executor;
    testsupport::ScriptedTransport transport;
    testsupport::FailureLog failures;
    std::size_t seen = 0;
    std::vector<std::string> refreshes;
    std::shared_ptr<QuilloClient> client = std::make_shared<QuilloClient>(
        QuilloConfig("editor 1"), [this](std::string const& t) { refreshes.push_back(t); });
};

}  // namespace quillosdk
