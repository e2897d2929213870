#include "quillosdk/TusRange.h"

#include <algorithm>
#include <utility>

#include "moxcore/threads/AsyncExecutor.h"
#include "quillocommon/Guid.h"
#include "quillocommon/SerialExecutor.h"
#include "quillosdk/RetryLoop.h"
#include "quillosdk/Session.h"
#include "quillosdk/TransferManager.h"
#include "quillosdk/TusWire.h"

namespace quillosdk {
namespace {

using moxcore::threads::Now;

/// How often a range that the service has lost begins anew.
constexpr int kMostCreations = 3;

/// What was sent is noted in steps of this size, smaller ones for a small file, and not more often.
constexpr std::chrono::milliseconds kBetweenNotes{10};
constexpr std::uint64_t kSentStep = std::uint64_t{512} << 10;
constexpr std::uint64_t kSentSteps = 1000;

/// A piece of which nothing has been sent for so long is waiting for a connection: one that is
/// there takes the first bytes at once.
constexpr std::uint32_t kConnectionPatienceMilliseconds = 20;

constexpr std::uint64_t kMostPieceBytes = std::uint64_t{64} << 20;
constexpr int kWorthGrowing = 32;

}  // namespace

TusRange::TusRange(std::shared_ptr<RangeOwner> const& owner, UploadContext newContext,
                   UploadRange range)
    : keeper(owner),
      owner(owner.get()),
      context(std::move(newContext)),
      range(std::move(range)),
      policy(std::make_shared<RetryPolicy>(tus::kLimits)) {}

void TusRange::Create() {
    if (creations == 0)
        policy->SetWaitListener([weak = keeper, this](auto since) {
            auto const alive = weak.lock();
            if (!alive) return;
            Post([this, since] {
                waitingSince = since;
                owner->OnWaitChanged();
            });
        });
    ++creations;
    phase = Phase::Creating;
    ahead = {};
    sentTo = 0;
    sent = 0;
    furthest = 0;
    range.confirmed = 0;
    auto const post = tus::CreationOf(range, owner->State(), *context.request);
    After(context.session->SendWithRetries(post, policy), &TusRange::OnCreated);
}

void TusRange::OnCreated(Answer const& answer) {
    auto const response = answer.Get();
    if (!tus::IsSuccess(response->status)) return owner->Refuse(response);
    range.location = tus::PathIn(*response);
    policy->Progressed();
    Confirm(0);
}

void TusRange::PrepareFrom(std::uint64_t from) {
    if (ahead && aheadFrom == from) return;
    auto const promised = std::make_shared<moxcore::async::Promise<Prepared>>();
    aheadFrom = from;
    ahead = promised->GetFuture();
    auto const size = std::min(pieceBytes, range.length - from);
    bool const isLast = IsWhole() && from + size == range.length;
    context.reading->CallAsync(
        [reader = context.reader, promised, offset = range.offset + from, size, isLast] {
            try {
                Prepared prepared{reader->Read(offset, size), {}};
                if (isLast) prepared.contentSha256 = reader->ContentSha256();
                promised->SetValue(std::move(prepared));
            } catch (...) {
                promised->SetException(std::current_exception());
            }
        });
}

void TusRange::SendNext() {
    phase = Phase::Sending;
    hasBegun = true;
    PrepareFrom(range.confirmed);
    sendingFrom = range.confirmed;
    sendingTo = std::min(sendingFrom + pieceBytes, range.length);
    sent = 0;
    waitsForConnection = false;
    ahead.OnComplete([self = Self()](PreparedFuture const& prepared) {
        self->Post([self, prepared] { self->SendPiece(prepared.Get()); });
    });
}

void TusRange::SendPiece(Prepared const& prepared) {
    auto const& piece = *prepared.piece;
    sendingTo = sendingFrom + piece.size;
    sentTo = std::max(sentTo, sendingTo);
    noted = 0;
    begunAt = Now();

    auto patch = tus::RequestTo("PATCH", range.location);
    patch.headers.emplace_back("Content-Type", "application/offset+octet-stream");
    patch.headers.emplace_back("Upload-Offset", std::to_string(sendingFrom));
    patch.headers.emplace_back("Upload-Checksum", piece.checksum);
    contentSha256 = prepared.contentSha256;
    if (!contentSha256.empty()) patch.headers.emplace_back("Quillo-Content-SHA256", contentSha256);
    patch.bodySource = piece.body;
    patch.onBytesSent = [self = Self(), from = sendingFrom, size = piece.size](auto bytes) {
        self->NoteBytesSent(from, bytes, size);
    };
    auto const answer = context.session->Send(std::move(patch));
    if (sendingTo < range.length) PrepareFrom(sendingTo);
    After(answer, &TusRange::OnPatched);
    LookForConnectionLater();
}

void TusRange::LookForConnectionLater() {
    context.steps->CallAsyncDelayed(
        [self = Self(), from = sendingFrom] {
            self->Post([self, from] {
                if (self->phase != Phase::Sending || self->sendingFrom != from || self->sent > 0)
                    return;
                self->waitsForConnection = true;
                self->owner->OnRangeChanged();
            });
        },
        kConnectionPatienceMilliseconds);
}

/// On the transport's thread, for one piece after the other. Hands on what is worth it: on a fast
/// line that would cost as much as the sending.
void TusRange::NoteBytesSent(std::uint64_t from, std::uint64_t bytes, std::uint64_t size) {
    bool const isFirstOrLast = noted == 0 || bytes == size;
    auto const step = std::min(kSentStep, context.file->Size() / kSentSteps);
    auto const now = Now();
    bool const isSoon = now >= notedAt && now < notedAt + kBetweenNotes;
    if (!isFirstOrLast && (bytes < noted + step || isSoon)) return;
    noted = bytes;
    notedAt = now;
    Post([self = Self(), from, bytes] { self->OnBytesSent(from, bytes); });
}

void TusRange::OnBytesSent(std::uint64_t from, std::uint64_t bytes) {
    if (phase != Phase::Sending || from != sendingFrom || bytes <= sent) return;
    waitsForConnection = false;
    auto const more = bytes - std::exchange(sent, bytes);
    sentAt = Now();
    owner->OnSent(more);
    if (!IsSending()) owner->OnRangeChanged();
}

void TusRange::OnPatched(Answer const& answer) {
    if (JudgeAnswer(answer).worthRepeating) return AskForOffsetLater(answer);
    auto const response = answer.Get();
    switch (response->status) {
        case tus::kNotFound:
        case tus::kGone:
            return CreateAnew();
        case tus::kChecksumMismatch:
            contentRefused = IsWhole() && sendingTo == range.length;
            return AskForOffsetLater(answer);
        case tus::kConflict:
            return AskForOffsetLater(answer);
        default:
            break;
    }
    if (!tus::IsSuccess(response->status)) return owner->Refuse(response);
    auto const offset = tus::BytesIn(*response, "UPLOAD-OFFSET");
    if (!offset || *offset <= sendingFrom || *offset > sendingTo) return AskForOffsetLater(answer);
    GrowPieces();
    if (auto const asset = response->headers.find("QUILLO-ASSET");
        asset != response->headers.end() && *offset == range.length) {
        response->body = asset->second;
        publication = response;
    }
    Confirm(*offset);
}

void TusRange::Confirm(std::uint64_t offset) {
    if (offset > furthest) {
        furthest = offset;
        isFailing = false;
        policy->Progressed();
    }
    range.confirmed = offset;
    // What was sent without its being noted is noted now.
    if (auto const moved = offset - std::min(offset, sendingFrom);
        phase == Phase::Sending && moved > sent)
        owner->OnSent(moved - sent);
    sent = 0;
    phase = range.IsComplete() ? Phase::Complete : Phase::Idle;
    if (phase == Phase::Idle) PrepareFrom(offset);
    owner->OnSent(0);
    owner->OnRangeChanged();
}

void TusRange::GrowPieces() {
    auto const waited = Now() - sentAt;
    if (mayGrow && sent > 0 && waited * kWorthGrowing > Now() - begunAt)
        pieceBytes = std::min(2 * pieceBytes, kMostPieceBytes);
}

void TusRange::AskForOffsetLater(Answer const& doubtful) {
    phase = Phase::Doubtful;
    sent = 0;
    pieceBytes = kPieceBytes;
    publicationInDoubt = publicationInDoubt || (IsWhole() && sendingTo == range.length);
    auto const verdict = JudgeAnswer(doubtful);
    // However long its turn or its sending took: the patience begins with the failure.
    if (!std::exchange(isFailing, true)) policy->Progressed();
    auto const delay = policy->NextDelay(verdict.retryAfter);
    if (!delay) {
        auto const response = doubtful.Get();
        if (tus::IsSuccess(response->status)) tus::FailWithoutOffset();
        return owner->Refuse(response);
    }
    if (verdict.worthRepeating) policy->Unavailable(*delay);
    context.steps->CallAsyncDelayed(
        [self = Self()] { self->Post([self] { self->AskForOffset(); }); },
        static_cast<std::uint32_t>(delay->count()));
    owner->OnRangeChanged();  // others may send meanwhile
}

void TusRange::AskForOffset() {
    phase = Phase::Doubtful;
    After(context.session->SendWithRetries(tus::RequestTo("HEAD", range.location), policy),
          &TusRange::OnOffset);
}

void TusRange::OnOffset(Answer const& answer) {
    auto const response = answer.Get();
    if (response->status == tus::kNotFound || response->status == tus::kGone) return CreateAnew();
    if (!tus::IsSuccess(response->status)) return owner->Refuse(response);
    auto const offset = tus::BytesIn(*response, "UPLOAD-OFFSET");
    auto const length = tus::BytesIn(*response, "UPLOAD-LENGTH");
    if (!offset || *offset > sentTo || (length && *length != range.length))
        tus::FailWithoutOffset();

    if (*offset < range.length) publicationInDoubt = false;
    if (std::exchange(contentRefused, false) && *offset == 0) {
        if (++contentRefusals > tus::kMostContentRefusals) tus::FailAsDamaged();
        // What is sent now gets a checksum of its own, whatever the earlier one was taken from.
        context.reader = std::make_shared<PieceReader>(context.file);
        ahead = {};
        furthest = 0;
        owner->OnRestart();
    }
    Confirm(*offset);
}

void TusRange::CreateAnew() {
    if (publicationInDoubt || creations >= kMostCreations) tus::FailAsLost(publicationInDoubt);
    range.key = quillocommon::Guid::CreateUnique().AsString();
    range.location.clear();
    owner->OnRestart();
    Create();
}

void TusRange::Post(std::function<void()> step) {
    context.steps->CallAsync([self = Self(), step = std::move(step)] {
        if (self->isAbandoned || self->owner->HasEnded()) return;
        try {
            step();
        } catch (...) {
            self->owner->Fail(std::current_exception());
        }
    });
}

void TusRange::After(Answer const& answer, void (TusRange::*step)(Answer const&)) {
    answer.OnComplete([self = Self(), step](Answer const& arrived) {
        self->Post([self, step, arrived] { (self.get()->*step)(arrived); });
    });
}

}  // namespace quillosdk
