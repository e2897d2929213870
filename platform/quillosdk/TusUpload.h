#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "moxcore/async/Future.h"
#include "moxcore/threads/Clock.h"
#include "quillosdk/Answer.h"
#include "quillosdk/FailureText.h"
#include "quillosdk/StreamCount.h"
#include "quillosdk/TransferManager.h"
#include "quillosdk/TusRange.h"
#include "quillosdk/UploadState.h"

namespace quillosdk {

/// One upload by the tus protocol, from the opening of the file to its publication. A small file is
/// one upload of the protocol. A larger one is sent in ranges, partial uploads that the service
/// joins in the end; several of them at the same time where that brings more. It keeps itself alive
/// until its future is complete. All its steps run on one serial executor, so no member needs a
/// lock.
class TusUpload : public RangeOwner, public std::enable_shared_from_this<TusUpload> {
public:
    /// `key` names the upload to the service.
    TusUpload(std::shared_ptr<Session> session, UploadRequest request, std::string key);
    ~TusUpload() override;

    /// Begins. Once.
    [[nodiscard]] moxcore::async::Future<std::shared_ptr<UploadResponse>> Start();

    // RangeOwner
    [[nodiscard]] UploadState const& State() const override { return state; }
    [[nodiscard]] bool HasEnded() const override { return hasEnded; }
    void OnRangeChanged() override;
    void OnSent(std::uint64_t bytes) override;
    void OnRestart() override;
    void OnWaitChanged() override;
    void Fail(std::exception_ptr const& exception) override;
    void Refuse(std::shared_ptr<HttpResponse> const& response) override;

private:
    using Ranges = std::vector<std::unique_ptr<TusRange>>;

    // How it begins.
    void Open();
    void BeginWhole();
    void BeginInRanges();
    void AskWhatIsOffered();
    void OnOffered(Answer const& answer);
    void AddRange(int streams);
    void AddRanges();

    // What follows its last byte.
    void AskForAsset(std::string const& location);
    void OnAsset(Answer const& answer);
    void Join();
    void OnJoined(Answer const& answer);
    void JoinLater(Answer const& doubtful);
    void CheckParts();
    void BeginAnew();
    void Publish(HttpResponse& response);

    void AbandonRanges(bool terminate);
    void End();
    void Post(std::function<void()> step);
    void After(Answer const& answer, void (TusUpload::*step)(Answer const&));
    void ReportProgress();

    UploadContext context;
    std::string const path;
    std::string const description;
    Task const task{quillocommon::Step::Upload, description};
    moxcore::async::Promise<std::shared_ptr<UploadResponse>> promise;
    bool hasEnded = false;

    UploadState state;
    Ranges ranges;         // those of `state`
    Ranges abandoned;      // kept for the answers that are still to come
    bool mayJoin = false;  // the service is known to offer it; nothing is sent in ranges before
    std::shared_ptr<HttpResponse> heldRefusal;  // which came before that was known
    StreamCount streams;
    std::uint64_t sentInAll = 0;
    std::uint64_t reported = 0;  // the progress reported last
    bool isFinishing = false;    // every byte has arrived
    bool joinInDoubt = false;    // the joining's outcome is unknown
    std::shared_ptr<RetryPolicy> joinPolicy;
    std::optional<moxcore::threads::TimePoint> joinWaitsSince;
    int beginnings = 0;
    int contentRefusals = 0;
    std::string contentSha256;
    bool isWaitTold = false;
};

}  // namespace quillosdk
