#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "moxcore/config/Error.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/messaging/Station.h"
#include "quilloauth/AuthManager.h"
#include "quilloclient/ServiceDatastore.h"
#include "quillosdk/RetryPolicy.h"
#include "tests/support/FailureLog.h"
#include "tests/support/ManualExecutor.h"
#include "tests/support/ScriptedService.h"
#include "tests/support/TemporaryDirectory.h"

namespace testsupport {

/// A folder's list of files with these names.
inline std::string Files(std::vector<std::string> const& names) {
    std::string list;
    for (std::size_t i = 0; i < names.size(); ++i)
        list +=
            (i > 0 ? "," : "") + Record(100 + static_cast<int>(i), names[i], R"(,"type":"file")");
    return R"({"assets":[)" + list + "]}";
}

class MessageLog final : public moxcore::messaging::Listener {
public:
    explicit MessageLog(quillo::QuilloDatastore& datastore) : station(datastore.GetStationID()) {
        AddRawListener(station, this);
    }
    ~MessageLog() override { RemoveRawListener(station, this); }

    void ListenToMessage(moxcore::messaging::Message const& message) override {
        messages.push_back(message);
    }

    std::vector<moxcore::messaging::Message> messages;

private:
    moxcore::utility::ImmutableString const station;
};

class DatastoreFixture : public testing::Test, protected ScriptedService {
protected:
    DatastoreFixture() {
        moxcore::filesupport::commondirs::SetUserRoot(directory.Text());
        quillosdk::RetryPolicy::SetRandomSource([] { return 0.5; });
        GrantTokens();
        On("GET /v1/me", R"({"user":)" + Record(1, "Jane") + "}");
        On("GET /v1/accounts", R"({"accounts":[)" + Record(2, "Studio") + "]}");
        quilloauth::jwt::InitializeAuthManager("editor", "", {}, "");
    }

    ~DatastoreFixture() override {
        datastore->SignOutJwt();
        datastore->SignOutOAuth2();
        executor.RunDue();
        quillosdk::RetryPolicy::SetRandomSource(nullptr);
    }

    template <class T>
    auto Complete(moxcore::async::Future<T> const& future) {
        executor.RunUntil([&] { return future.IsComplete(); });
        return future;
    }

    template <class T>
    std::int32_t ResultOf(moxcore::async::Future<T> const& future) {
        return moxcore::config::ExtractResultFromException(Complete(future).GetException());
    }

    /// Signs in and has the service tell of changes, from number 7 on.
    void Follow() {
        datastore->SignIn();
        executor.RunUntil([&] { return !Requests("GET /v1/events").empty(); });
        Say("ready", "{}", 7);
    }

    /// The service says something on the connection made last.
    void Say(std::string const& event, std::string const& data, int id) {
        transport.SendBody(
            IndicesOf("GET /v1/events").back(),
            "id: " + std::to_string(id) + "\nevent: " + event + "\ndata: " + data + "\n\n");
        executor.RunDue();
    }

    void SayChanged(int folder) {
        Say("changed", R"({"list":"assets","of":")" + Id(folder) + R"("})", 8);
    }

    static std::string FolderLine(int folder) {
        return "GET /v1/folders/" + Id(folder) + "/children";
    }

    /// The names in a folder's list, which is there or on its way.
    std::vector<std::string> Names(int folder) {
        auto const list =
            Complete(datastore->GetAssetList(moxcore::utility::Guid(Id(folder)))).Get();
        std::vector<std::string> names;
        for (std::size_t i = 0; i < list->GetCount(); ++i)
            names.push_back(list->GetAsset(i)->GetName());
        EXPECT_FALSE(list->GetAsset(names.size()));
        return names;
    }

    TemporaryDirectory directory;
    ManualExecutor executor;
    FailureLog failures;
    std::shared_ptr<quillo::QuilloDatastore> datastore = quillo::ServiceDatastore::Create();
    MessageLog log{*datastore};
};

}  // namespace testsupport
