#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "moxcore/async/Future.h"
#include "moxcore/threads/Clock.h"
#include "quillosdk/Answer.h"
#include "quillosdk/PieceReader.h"
#include "quillosdk/RetryPolicy.h"
#include "quillosdk/UploadState.h"

namespace quillocommon {
class SerialExecutor;
}

namespace quillosdk {

class Session;
class UploadRequest;

/// What the ranges of one upload share.
struct UploadContext {
    std::shared_ptr<Session> session;
    std::shared_ptr<UploadRequest const> request;
    std::shared_ptr<quillocommon::SerialExecutor> steps;    ///< runs all that changes the upload
    std::shared_ptr<quillocommon::SerialExecutor> reading;  ///< runs all that reads the file
    std::shared_ptr<FileSnapshot const> file;
    std::shared_ptr<PieceReader> reader;  ///< for functions on `reading` alone
};

/// The upload that a range belongs to. Its functions are called on the executor of its steps.
class RangeOwner {
public:
    virtual ~RangeOwner() = default;

    [[nodiscard]] virtual UploadState const& State() const = 0;
    [[nodiscard]] virtual bool HasEnded() const = 0;

    /// A range may send a piece, or is complete, or has sent all of its piece.
    virtual void OnRangeChanged() = 0;
    /// A range has sent so many bytes more.
    virtual void OnSent(std::uint64_t bytes) = 0;
    /// A range begins again with its first byte.
    virtual void OnRestart() = 0;
    /// Whether a range waits for the service has changed.
    virtual void OnWaitChanged() = 0;

    virtual void Fail(std::exception_ptr const& exception) = 0;
    virtual void Refuse(std::shared_ptr<HttpResponse> const& response) = 0;
};

/// One range of an upload: creates it at the service, sends one piece for each SendNext, and asks
/// the service for its offset by itself when a connection is cut.
/// While a piece is sent, the next one is read. On the executor of the upload's steps.
class TusRange {
public:
    enum class Phase { Creating, Idle, Sending, Doubtful, Complete };

    /// Owned by `owner`, which what the range waits for keeps alive.
    TusRange(std::shared_ptr<RangeOwner> const& owner, UploadContext context, UploadRange range);
    TusRange(TusRange const&) = delete;
    TusRange& operator=(TusRange const&) = delete;

    void Create();

    /// Sends the next piece of a range that is idle.
    void SendNext();

    /// Asks after a while how far the service is, since `doubtful` does not tell.
    void AskForOffsetLater(Answer const& doubtful);

    /// Asks how far the service is, of a range that seemed to be complete.
    void AskForOffset();

    /// Takes no notice any more of what is still to come.
    void Abandon() { isAbandoned = true; }

    [[nodiscard]] UploadRange const& Range() const { return range; }
    /// Of the whole file, once its last piece has been sent by an upload in one range.
    [[nodiscard]] std::string const& ContentSha256() const { return contentSha256; }
    /// The answer to the last piece, when it describes the published movie in its body; else null.
    [[nodiscard]] std::shared_ptr<HttpResponse> const& Publication() const { return publication; }
    [[nodiscard]] Phase GetPhase() const { return phase; }
    [[nodiscard]] bool HasBegun() const { return hasBegun; }

    /// Bytes that the service has, or that are on their way to it.
    [[nodiscard]] std::uint64_t Moved() const { return range.confirmed + sent; }

    /// Whether bytes of its piece are still to be sent, and go: not while it waits for a
    /// connection.
    [[nodiscard]] bool IsSending() const {
        return phase == Phase::Sending && sendingFrom + sent < sendingTo && !waitsForConnection;
    }

    /// For a request about the upload that is this range, once it is complete.
    [[nodiscard]] std::shared_ptr<RetryPolicy> Policy() const { return policy; }

    /// Since when it has waited for the service; nothing when it does not.
    [[nodiscard]] std::optional<moxcore::threads::TimePoint> WaitingSince() const {
        return waitingSince;
    }

    /// Lets pieces grow, up to 64 MiB, while waiting for their answers costs time: for a service
    /// that takes one stream only.
    void LetPiecesGrow() { mayGrow = true; }

private:
    /// A piece, and with the last one of an upload in one range the checksum of the file.
    struct Prepared {
        std::shared_ptr<Piece const> piece;
        std::string contentSha256;
    };
    using PreparedFuture = moxcore::async::Future<Prepared>;

    void OnCreated(Answer const& answer);
    void PrepareFrom(std::uint64_t from);
    void SendPiece(Prepared const& prepared);
    void LookForConnectionLater();
    void NoteBytesSent(std::uint64_t from, std::uint64_t bytes, std::uint64_t size);
    void OnBytesSent(std::uint64_t from, std::uint64_t bytes);
    void OnPatched(Answer const& answer);
    void Confirm(std::uint64_t offset);
    void GrowPieces();
    void OnOffset(Answer const& answer);
    void CreateAnew();

    /// Runs `step` on the executor of the upload's steps; what it throws fails the upload.
    void Post(std::function<void()> step);
    void After(Answer const& answer, void (TusRange::*step)(Answer const&));

    [[nodiscard]] bool IsWhole() const { return !owner->State().isJoined; }

    /// Keeps the owner alive, and this range with it.
    [[nodiscard]] std::shared_ptr<TusRange> Self() { return {keeper.lock(), this}; }

    std::weak_ptr<RangeOwner> const keeper;
    RangeOwner* const owner;
    bool isAbandoned = false;
    UploadContext context;
    UploadRange range;
    std::shared_ptr<RetryPolicy> policy;
    Phase phase = Phase::Creating;
    bool hasBegun = false;
    int creations = 0;

    std::string contentSha256;
    std::shared_ptr<HttpResponse> publication;

    // In bytes from the range's beginning.
    PreparedFuture ahead;           // the piece read last or being read
    std::uint64_t aheadFrom = 0;    // where it begins
    std::uint64_t sendingFrom = 0;  // the piece sent last
    std::uint64_t sendingTo = 0;    // likewise
    std::uint64_t sent = 0;         // of that piece, while it is on its way
    bool waitsForConnection = false;
    std::uint64_t sentTo = 0;    // the end of all that was sent
    std::uint64_t furthest = 0;  // the furthest offset confirmed

    std::uint64_t noted = 0;              // of the piece's bytes sent; on the transport's thread
    moxcore::threads::TimePoint notedAt;  // likewise
    std::uint64_t pieceBytes = kPieceBytes;
    bool mayGrow = false;
    moxcore::threads::TimePoint begunAt;  // the piece sent last
    moxcore::threads::TimePoint sentAt;   // the last byte of it

    bool isFailing = false;           // since it came closer to its end
    bool publicationInDoubt = false;  // the last byte was sent, and its outcome is unknown
    bool contentRefused = false;      // the service found another checksum for the whole
    int contentRefusals = 0;
    std::optional<moxcore::threads::TimePoint> waitingSince;
};

}  // namespace quillosdk
