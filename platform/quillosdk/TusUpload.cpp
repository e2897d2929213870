#include "quillosdk/TusUpload.h"

#include <algorithm>
#include <utility>

#include "moxcore/config/Error.h"
#include "moxcore/threads/AsyncExecutor.h"
#include "quillocommon/SerialExecutor.h"
#include "quillosdk/AnswerReader.h"
#include "quillosdk/RetryLoop.h"
#include "quillosdk/Session.h"
#include "quillosdk/TusWire.h"

namespace quillosdk {
namespace {

using moxcore::config::ResultException;

constexpr std::uint64_t kProgressSteps = 1000;

/// A file of up to so many bytes goes in one stream: it has no pieces to send beside each other.
constexpr std::uint64_t kSmallFile = 3 * kPieceBytes;

/// Streams at a time. A file is cut for all of them at first, so that a further one can begin at
/// once: on a long line it would come late if it had to be created first.
constexpr int kMostStreams = 8;
constexpr std::size_t kFewestSpareRanges = 2;

/// Each creation leaves a connection behind it. There are enough for the pieces, and for the
/// further creations beside them: a new connection takes a round trip in which its piece stands
/// still.
constexpr int kFirstRanges = 12;

constexpr int kMostBeginnings = 3;

std::string NewKey() {
    return quillocommon::Guid::CreateUnique().AsString();
}

bool MayGoOnLater(std::exception_ptr const& exception) {
    return RetryPolicy::IsTransientResult(moxcore::config::ExtractResultFromException(exception));
}

}  // namespace

TusUpload::TusUpload(std::shared_ptr<Session> session, UploadRequest newRequest, std::string key)
    : context{std::move(session),
              std::make_shared<UploadRequest const>(std::move(newRequest)),
              std::make_shared<quillocommon::SerialExecutor>(),
              std::make_shared<quillocommon::SerialExecutor>(),
              nullptr,
              nullptr},
      path(context.request->Path()),
      description("upload " + Sanitise(path.substr(path.rfind('/') + 1))),
      streams(kMostStreams) {
    state.key = std::move(key);
}

TusUpload::~TusUpload() = default;

moxcore::async::Future<std::shared_ptr<UploadResponse>> TusUpload::Start() {
    Post([this] { Open(); });
    return promise.GetFuture();
}

void TusUpload::Open() {
    context.file = std::make_shared<FileSnapshot const>(path);
    context.reader = std::make_shared<PieceReader>(context.file);
    state.size = context.file->Size();
    auto const offered = context.session->OffersJoining();
    mayJoin = offered.value_or(false);
    if (state.size <= kSmallFile || !offered.value_or(true)) return BeginWhole();
    BeginInRanges();
    if (!offered) AskWhatIsOffered();
}

void TusUpload::BeginWhole() {
    state.isJoined = false;
    mayJoin = true;
    state.ranges = {{.offset = 0, .length = state.size, .key = state.key}};
    ranges.push_back(std::make_unique<TusRange>(shared_from_this(), context, state.ranges.front()));
    if (state.size > kSmallFile) ranges.front()->LetPiecesGrow();
    ranges.front()->Create();
}

void TusUpload::BeginInRanges() {
    ++beginnings;
    state.isJoined = true;
    for (int i = 0; i < kFirstRanges && state.PlannedEnd() < state.size; ++i)
        AddRange(kMostStreams);
}

void TusUpload::AddRange(int forStreams) {
    auto const offset = state.PlannedEnd();
    state.ranges.push_back({.offset = offset,
                            .length = NextRangeLength(state.size, offset, forStreams),
                            .key = NewKey()});
    ranges.push_back(std::make_unique<TusRange>(shared_from_this(), context, state.ranges.back()));
    ranges.back()->Create();
}

/// Asked beside the first creations, not before them: on a long line each answer takes its time.
void TusUpload::AskWhatIsOffered() {
    auto const options = tus::RequestTo("OPTIONS", tus::kUploadsPath);
    After(context.session->SendWithRetries(options, std::make_shared<RetryPolicy>(tus::kLimits)),
          &TusUpload::OnOffered);
}

void TusUpload::OnOffered(Answer const& answer) {
    auto const response = answer.Get();
    mayJoin = tus::Offers(*response, "concatenation");
    context.session->NoteOffersJoining(mayJoin);
    if (!mayJoin) {
        AbandonRanges(tus::Offers(*response, "termination"));
        heldRefusal.reset();
        return BeginWhole();
    }
    if (heldRefusal) return Refuse(heldRefusal);
    OnRangeChanged();
}

void TusUpload::OnRangeChanged() {
    if (!mayJoin || isFinishing) return;
    for (std::size_t i = 0; i < ranges.size(); ++i)
        state.ranges[i] = ranges[i]->Range();
    int busy = 0;
    int sending = 0;
    for (auto const& range : ranges) {
        if (range->GetPhase() == TusRange::Phase::Sending) ++busy;
        if (range->IsSending()) ++sending;
    }
    for (auto const& range : ranges) {
        if (range->GetPhase() != TusRange::Phase::Idle) continue;
        if (!streams.MayBegin(busy, sending)) break;
        range->SendNext();
        ++busy;
        ++sending;
    }
    if (state.isJoined) AddRanges();
    isFinishing = state.PlannedEnd() == state.size &&
                  std::all_of(ranges.begin(), ranges.end(), [](auto const& range) {
                      return range->GetPhase() == TusRange::Phase::Complete;
                  });
    if (!isFinishing) return;
    if (state.isJoined) return Join();
    auto const& publication = ranges.front()->Publication();
    if (!publication) return AskForAsset(state.ranges.front().location);
    contentSha256 = ranges.front()->ContentSha256();
    Publish(*publication);
}

/// Creates further ranges, so that some wait for each stream that becomes free.
void TusUpload::AddRanges() {
    std::size_t spare = 0;
    int busy = 0;
    for (auto const& range : ranges) {
        if (!range->HasBegun()) ++spare;
        if (range->GetPhase() == TusRange::Phase::Sending) ++busy;
    }
    auto const wanted = std::max(kFewestSpareRanges, static_cast<std::size_t>(busy));
    for (; spare < wanted && state.PlannedEnd() < state.size; ++spare)
        AddRange(std::max(busy, 1));
}

void TusUpload::AskForAsset(std::string const& location) {
    After(context.session->SendWithRetries(tus::RequestTo("GET", location + "/asset"),
                                           state.isJoined ? joinPolicy : ranges.front()->Policy()),
          &TusUpload::OnAsset);
}

void TusUpload::OnAsset(Answer const& answer) {
    auto const response = answer.Get();
    if (response->status == tus::kConflict && !state.isJoined) {
        isFinishing = false;
        return ranges.front()->AskForOffsetLater(answer);
    }
    if (!tus::IsSuccess(response->status)) return Refuse(response);
    if (!state.isJoined) contentSha256 = ranges.front()->ContentSha256();
    Publish(*response);
}

void TusUpload::Join() {
    if (!joinPolicy) {
        joinPolicy = std::make_shared<RetryPolicy>(tus::kLimits);
        joinPolicy->SetWaitListener([weak = weak_from_this()](auto since) {
            auto const self = weak.lock();
            if (!self) return;
            self->Post([self = self.get(), since] {
                self->joinWaitsSince = since;
                self->OnWaitChanged();
            });
        });
    }
    auto const promised = std::make_shared<moxcore::async::Promise<std::string>>();
    context.reading->CallAsync([reader = context.reader, promised] {
        try {
            promised->SetValue(reader->ContentSha256());
        } catch (...) {
            promised->SetException(std::current_exception());
        }
    });
    promised->GetFuture().OnComplete(
        [self = shared_from_this()](moxcore::async::Future<std::string> const& sha256) {
            self->Post([self = self.get(), sha256] {
                self->contentSha256 = sha256.Get();
                auto const post =
                    tus::JoiningOf(self->state, *self->context.request, self->contentSha256);
                self->After(self->context.session->Send(post), &TusUpload::OnJoined);
            });
        });
}

void TusUpload::OnJoined(Answer const& answer) {
    if (JudgeAnswer(answer).worthRepeating) {
        joinInDoubt = true;
        return JoinLater(answer);
    }
    auto const response = answer.Get();
    joinPolicy->Answered();
    switch (response->status) {
        case tus::kConflict:
            return JoinLater(answer);
        case tus::kNotFound:
        case tus::kGone:
            return BeginAnew();
        case tus::kChecksumMismatch:
            if (++contentRefusals > tus::kMostContentRefusals) tus::FailAsDamaged();
            joinInDoubt = false;
            return BeginAnew();
        default:
            break;
    }
    if (!tus::IsSuccess(response->status)) return Refuse(response);
    if (response->body.empty()) return AskForAsset(tus::PathIn(*response));
    Publish(*response);
}

/// Joins again after a while; if the service has said that bytes are missing, each part asks first
/// for how many it has.
void TusUpload::JoinLater(Answer const& doubtful) {
    auto const verdict = JudgeAnswer(doubtful);
    auto const delay = joinPolicy->NextDelay(verdict.retryAfter);
    if (!delay) return Refuse(doubtful.Get());
    if (verdict.worthRepeating) joinPolicy->Unavailable(*delay);
    auto const next = verdict.worthRepeating ? &TusUpload::Join : &TusUpload::CheckParts;
    context.steps->CallAsyncDelayed(
        [self = shared_from_this(), next] {
            self->Post([self = self.get(), next] { (self->*next)(); });
        },
        static_cast<std::uint32_t>(delay->count()));
}

void TusUpload::CheckParts() {
    isFinishing = false;
    for (auto const& range : ranges)
        range->AskForOffset();
}

/// The parts are gone.
void TusUpload::BeginAnew() {
    if (joinInDoubt || beginnings >= kMostBeginnings) tus::FailAsLost(joinInDoubt);
    AbandonRanges(false);
    joinPolicy.reset();
    state.key = NewKey();
    isFinishing = false;
    context.reader = std::make_shared<PieceReader>(context.file);
    OnRestart();
    BeginInRanges();
}

void TusUpload::Publish(HttpResponse& response) {
    auto const published = ReadPublishedAsset(response.body);
    if (published.bytes != state.size || published.sha256 != contentSha256)
        throw ResultException(kContentMismatch,
                              "the service has stored something else than was sent; try again");
    auto const& progress = context.request->GetProgress();
    if (progress) progress(state.size, state.size);
    End();
    promise.SetValue(
        std::make_shared<UploadResponse>(response.status, response.headers, published.asset));
}

void TusUpload::AbandonRanges(bool terminate) {
    for (auto& range : ranges) {
        range->Abandon();
        auto const& location = range->Range().location;
        if (terminate && !location.empty())
            static_cast<void>(context.session->Send(tus::RequestTo("DELETE", location)));
        abandoned.push_back(std::move(range));
    }
    ranges.clear();
    state.ranges.clear();
}

void TusUpload::OnSent(std::uint64_t bytes) {
    sentInAll += bytes;
    streams.OnSent(moxcore::threads::Now(), sentInAll);
    ReportProgress();
    if (bytes > 0) OnRangeChanged();
}

void TusUpload::OnRestart() {
    if (!state.isJoined || ranges.empty()) reported = 0;
}

void TusUpload::ReportProgress() {
    std::uint64_t done = 0;
    for (auto const& range : ranges)
        done += range->Moved();
    // The end is reported once the file is published, and not before.
    bool const worthTelling =
        done < state.size && done > reported && done - reported >= state.size / kProgressSteps;
    auto const& progress = context.request->GetProgress();
    if (!worthTelling || !progress) return;
    reported = done;
    progress(done, state.size);
}

/// The upload waits when every range does that has something to do.
void TusUpload::OnWaitChanged() {
    auto const& listener = context.request->GetWaitListener();
    auto since = joinWaitsSince;
    for (auto const& range : ranges) {
        bool const isBusy = range->GetPhase() != TusRange::Phase::Idle &&
                            range->GetPhase() != TusRange::Phase::Complete;
        auto const waiting = range->WaitingSince();
        if (isBusy && !waiting) {
            since.reset();
            break;
        }
        if (waiting) since = std::min(*waiting, since.value_or(*waiting));
    }
    if (since.has_value() == isWaitTold) return;
    isWaitTold = since.has_value();
    if (listener) listener(since);
}

void TusUpload::Fail(std::exception_ptr const& exception) {
    if (hasEnded) return;
    auto const told = ReportException(task, exception);
    if (state.isJoined && !MayGoOnLater(exception)) AbandonRanges(true);
    End();
    promise.SetException(told);
}

void TusUpload::Refuse(std::shared_ptr<HttpResponse> const& response) {
    if (hasEnded) return;
    if (!mayJoin) {
        heldRefusal = response;
        return;
    }
    auto const refused =
        std::make_shared<UploadResponse>(response->status, response->headers, Asset());
    refused->SetRefusal(ReportRefusal(task, *response));
    if (state.isJoined) AbandonRanges(true);
    End();
    promise.SetValue(refused);
}

void TusUpload::End() {
    hasEnded = true;
    if (std::exchange(isWaitTold, false)) context.request->GetWaitListener()({});
}

void TusUpload::Post(std::function<void()> step) {
    context.steps->CallAsync([self = shared_from_this(), step = std::move(step)] {
        if (self->hasEnded) return;
        try {
            step();
        } catch (...) {
            self->Fail(std::current_exception());
        }
    });
}

void TusUpload::After(Answer const& answer, void (TusUpload::*step)(Answer const&)) {
    answer.OnComplete([self = shared_from_this(), step](Answer const& arrived) {
        self->Post([self = self.get(), step, arrived] { (self->*step)(arrived); });
    });
}

}  // namespace quillosdk
