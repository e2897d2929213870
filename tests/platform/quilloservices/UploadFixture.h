#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quillosdk/QuilloClient.h"
#include "quillosdk/RetryPolicy.h"
#include "tests/support/FailureLog.h"
#include "tests/support/FakeTus.h"
#include "tests/support/ManualExecutor.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/TemporaryDirectory.h"

namespace testsupport {

constexpr std::size_t kPiece = std::size_t{8} << 20;

/// Bytes of which no two stretches are alike.
inline std::string Movie(std::size_t size) {
    std::string bytes(size, '\0');
    std::uint32_t state = 1;
    for (auto& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

/// Uploads to a service in memory.
class UploadFixture : public testing::Test {
protected:
    UploadFixture() {
        quillosdk::RetryPolicy::SetRandomSource([] { return 0.5; });
        MakeClient();
        transport.SetResponder(
            [this](quillosdk::HttpRequest const& request) { return tus.Answer(request); });
    }
    ~UploadFixture() override { quillosdk::RetryPolicy::SetRandomSource({}); }

    /// One that has not asked the service for anything.
    void MakeClient() {
        client.emplace(quillosdk::QuilloConfig("editor"),
                       quillosdk::QuilloClient::TokenRefresher());
        static_cast<void>(client->UpdateAccessToken("secret-of-the-test"));
    }

    using Future = moxcore::async::Future<std::shared_ptr<quillosdk::UploadResponse>>;

    /// A service that has seen nothing yet, in this weather; nothing is noted yet.
    void SetWeather(std::deque<FakeTus::Event> events) {
        tus = FakeTus();
        tus.events = std::move(events);
        progress.clear();
        waits.clear();
    }

    /// Begins to upload the file at `path`.
    Future Begin(std::filesystem::path const& path, quillocommon::Guid const& stack = {}) {
        quillosdk::UploadRequest request(
            folderID, path.string(),
            [this](std::uint64_t done, std::uint64_t all) { progress.emplace_back(done, all); });
        request.SetAutoversionId(stack);
        request.SetWaitListener([this](auto since) { waits.push_back(since.has_value()); });
        return client->GetTransferManager().Upload(request, uploadID);
    }

    /// Uploads the file at `path`, through all waits, to its end.
    Future Upload(std::filesystem::path const& path, quillocommon::Guid const& stack = {}) {
        auto future = Begin(path, stack);
        executor.AdvanceBy(std::chrono::hours(1));
        EXPECT_TRUE(future.IsComplete());
        return future;
    }

    ManualExecutor executor;
    ScriptedTransport transport;
    FailureLog failures;
    TemporaryDirectory directory;
    FakeTus tus;
    std::optional<quillosdk::QuilloClient> client;
    quillocommon::Guid const folderID{std::string_view("11111111-2222-3333-4444-555555555555")};
    quillocommon::Guid uploadID;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> progress;
    std::vector<bool> waits;  // each with its end
};

}  // namespace testsupport
