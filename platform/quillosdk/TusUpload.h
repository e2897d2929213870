#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "moxcore/async/Future.h"
#include "quillosdk/Answer.h"
#include "quillosdk/ChunkReader.h"
#include "quillosdk/FailureText.h"
#include "quillosdk/FileSnapshot.h"
#include "quillosdk/RetryPolicy.h"
#include "quillosdk/Session.h"
#include "quillosdk/TransferManager.h"

namespace quillosdk {

/// One upload by the tus protocol, from the opening of the file to its publication. It keeps itself
/// alive until its future is complete. Its steps follow one another, on the executor's and the
/// transport's threads; while a piece is being sent the next one is read and hashed. So no member
/// needs a lock: each step happens after the one before it.
class TusUpload : public std::enable_shared_from_this<TusUpload> {
public:
    /// `key` names the upload to the service.
    TusUpload(std::shared_ptr<Session> session, UploadRequest request, std::string key);

    /// Begins. Once.
    [[nodiscard]] moxcore::async::Future<std::shared_ptr<UploadResponse>> Start();

private:
    using ChunkFuture = moxcore::async::Future<std::shared_ptr<Chunk const>>;

    // The steps, in their order, each with what continues it.
    void Open();
    void Create();
    void OnCreated(Answer const& answer);
    void SendFrom(std::uint64_t offset);
    void SendChunk(Chunk const& chunk);
    void OnPatched(Answer const& answer);
    void AskForAsset();
    void OnPublished(Answer const& answer);

    // What happens when it cannot be told how far the service is.
    void AskForOffsetLater(Answer const& doubtful);
    void AskForOffset();
    void OnOffset(Answer const& answer);
    void CreateAnew();

    // The ends.
    void Fail(std::exception_ptr const& exception);
    void Refuse(HttpResponse& response);

    /// Calls `step`; what it throws fails the upload.
    template <class Step>
    void Guard(Step step);

    /// Goes on with `step` once `answer` is there.
    void After(Answer const& answer, void (TusUpload::*step)(Answer const&));

    [[nodiscard]] HttpRequest RequestTo(char const* method, std::string path) const;
    [[nodiscard]] ChunkFuture ReadChunk(std::uint64_t offset);
    void NoteOffset(std::uint64_t offset);
    void ReportProgress(std::uint64_t done);

    std::shared_ptr<Session> const session;
    UploadRequest const request;
    std::string const description;
    Task const task{quillocommon::Step::Upload, description};
    std::shared_ptr<RetryPolicy> policy;
    moxcore::async::Promise<std::shared_ptr<UploadResponse>> promise;

    std::shared_ptr<FileSnapshot const> file;
    std::string key;       // of the upload as it was created last
    std::string location;  // its path at the service
    int creations = 0;

    std::shared_ptr<ChunkReader> reader;
    ChunkFuture ahead;              // the piece read last or being read
    std::uint64_t aheadOffset = 0;  // where it begins
    std::uint64_t sendingFrom = 0;  // the piece sent last
    std::uint64_t sendingTo = 0;    // likewise
    std::uint64_t sentTo = 0;       // the end of all that was sent
    std::uint64_t furthest = 0;     // the furthest offset confirmed
    bool publicationInDoubt =
        false;                    // the last byte was sent, and no answer told what became of it
    bool contentRefused = false;  // the service found another checksum for the whole
    int contentRefusals = 0;
    std::uint64_t reported = 0;  // the progress told last
};

}  // namespace quillosdk
