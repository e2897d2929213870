#include "quillosdk/TusUpload.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "moxcore/config/Error.h"
#include "moxcore/threads/AsyncExecutor.h"
#include "quillocommon/Saturating.h"
#include "quillocommon/ServiceAddress.h"
#include "quillocommon/Url.h"
#include "quillosdk/AnswerReader.h"
#include "quillosdk/RetryLoop.h"

namespace quillosdk {
namespace {

using moxcore::config::ResultException;

constexpr char kUploadsPath[] = "/v1/uploads";

/// A movie has taken its time to export, and its upload may have lasted long: more patience than
/// for a list.
constexpr RetryLimits kLimits{.attempts = 20, .patience = std::chrono::seconds(300)};

/// How often an upload that the service has lost, or has stored wrongly, begins anew.
constexpr int kMostCreations = 3;
constexpr int kMostContentRefusals = 2;

constexpr std::uint64_t kProgressSteps = 1000;

constexpr int kNotFound = 404;
constexpr int kConflict = 409;
constexpr int kGone = 410;
constexpr int kChecksumMismatch = 460;

bool IsSuccess(int status) {
    return status >= 200 && status <= 299;
}

std::string FileName(std::string const& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string Metadata(UploadRequest const& request) {
    std::string text = "filename " + Base64(FileName(request.Path())) + ",folder_id " +
                       Base64(request.FolderID().AsString());
    if (!request.AutoversionID().IsNull())
        text += ",version_stack_id " + Base64(request.AutoversionID().AsString());
    return text;
}

/// A header that holds a number of bytes.
std::optional<std::uint64_t> BytesIn(HttpResponse const& response, char const* header) {
    auto const found = response.headers.find(header);
    if (found == response.headers.end()) return std::nullopt;
    return quillocommon::ReadCount(found->second);
}

[[noreturn]] void FailWithoutOffset() {
    throw ResultException(kMalformedAnswer, "the service does not tell how far the upload is");
}

/// The path to which a creation's Location leads. Never one at another origin: the token goes
/// there.
std::string PathIn(HttpResponse const& response) {
    auto const address = quillocommon::GetServiceAddress();
    auto const found = response.headers.find("LOCATION");
    if (found == response.headers.end())
        throw ResultException(kMalformedAnswer, "the service did not say where the upload goes");
    auto const url = quillocommon::ParseUrl(found->second, address + kUploadsPath);
    if (!url || url->origin != address || url->hasUser)
        throw ResultException(kMalformedAnswer, "the service sent the upload somewhere else");
    return url->target;
}

}  // namespace

TusUpload::TusUpload(std::shared_ptr<Session> session, UploadRequest newRequest, std::string key)
    : session(std::move(session)),
      request(std::move(newRequest)),
      description("upload " + Sanitise(FileName(request.Path()))),
      policy(std::make_shared<RetryPolicy>(kLimits)),
      key(std::move(key)) {
    policy->SetWaitListener(request.GetWaitListener());
}

moxcore::async::Future<std::shared_ptr<UploadResponse>> TusUpload::Start() {
    moxcore::threads::GetIOBoundExecutor()->CallAsync(
        [self = shared_from_this()] { self->Guard([&] { self->Open(); }); });
    return promise.GetFuture();
}

void TusUpload::Open() {
    file = std::make_shared<FileSnapshot const>(request.Path());
    Create();
}

void TusUpload::Create() {
    ++creations;
    reader = std::make_shared<ChunkReader>(file);
    ahead = {};
    sentTo = 0;
    furthest = 0;
    reported = 0;

    auto post = RequestTo("POST", kUploadsPath);
    post.headers.emplace_back("Upload-Length", std::to_string(file->Size()));
    post.headers.emplace_back("Upload-Metadata", Metadata(request));
    post.headers.emplace_back("Idempotency-Key", key);
    After(session->SendWithRetries(post, policy), &TusUpload::OnCreated);
}

void TusUpload::OnCreated(Answer const& answer) {
    auto const response = answer.Get();
    if (!IsSuccess(response->status)) return Refuse(*response);
    location = PathIn(*response);
    policy->Progressed();
    SendFrom(0);
}

void TusUpload::SendFrom(std::uint64_t offset) {
    NoteOffset(offset);
    if (offset == file->Size()) return AskForAsset();
    if (!ahead || aheadOffset != offset) ahead = ReadChunk(offset);
    ahead.OnComplete([self = shared_from_this()](ChunkFuture const& chunk) {
        self->Guard([&] { self->SendChunk(*chunk.Get()); });
    });
}

void TusUpload::SendChunk(Chunk const& chunk) {
    sendingFrom = chunk.offset;
    sendingTo = chunk.End();
    sentTo = std::max(sentTo, sendingTo);

    auto patch = RequestTo("PATCH", location);
    patch.headers.emplace_back("Content-Type", "application/offset+octet-stream");
    patch.headers.emplace_back("Upload-Offset", std::to_string(chunk.offset));
    patch.headers.emplace_back("Upload-Checksum", chunk.checksum);
    if (!chunk.contentSha256.empty())
        patch.headers.emplace_back("Quillo-Content-SHA256", chunk.contentSha256);
    patch.body = chunk.bytes;
    patch.onBytesSent = [self = shared_from_this(), from = chunk.offset](std::uint64_t bytes) {
        self->ReportProgress(from + bytes);
    };
    auto const answer = session->Send(std::move(patch));
    if (sendingTo < file->Size()) ahead = ReadChunk(sendingTo);
    After(answer, &TusUpload::OnPatched);
}

void TusUpload::OnPatched(Answer const& answer) {
    if (JudgeAnswer(answer).worthRepeating) return AskForOffsetLater(answer);
    auto const response = answer.Get();
    switch (response->status) {
        case kNotFound:
        case kGone:
            return CreateAnew();
        case kChecksumMismatch:
            contentRefused = sendingTo == file->Size();
            return AskForOffsetLater(answer);
        case kConflict:
            return AskForOffsetLater(answer);
        default:
            break;
    }
    if (!IsSuccess(response->status)) return Refuse(*response);
    auto const offset = BytesIn(*response, "UPLOAD-OFFSET");
    if (!offset || *offset <= sendingFrom || *offset > sendingTo) return AskForOffsetLater(answer);
    SendFrom(*offset);
}

void TusUpload::AskForAsset() {
    After(session->SendWithRetries(RequestTo("GET", location + "/asset"), policy),
          &TusUpload::OnPublished);
}

void TusUpload::OnPublished(Answer const& answer) {
    auto const response = answer.Get();
    if (response->status == kConflict) return AskForOffsetLater(answer);
    if (!IsSuccess(response->status)) return Refuse(*response);
    auto const published = ReadPublishedAsset(response->body);
    auto const sha256 = ahead.Get()->contentSha256;  // the last piece is the one read last
    if (published.bytes != file->Size() || published.sha256 != sha256)
        throw ResultException(kContentMismatch,
                              "the service has stored something else than was sent; try again");
    if (request.GetProgress()) request.GetProgress()(file->Size(), file->Size());
    promise.SetValue(
        std::make_shared<UploadResponse>(response->status, response->headers, published.asset));
}

void TusUpload::AskForOffsetLater(Answer const& doubtful) {
    publicationInDoubt = publicationInDoubt || sendingTo == file->Size();
    auto const verdict = JudgeAnswer(doubtful);
    auto const delay = policy->NextDelay(verdict.retryAfter);
    if (!delay) {
        auto const response = doubtful.Get();
        if (IsSuccess(response->status)) FailWithoutOffset();
        return Refuse(*response);
    }
    if (verdict.worthRepeating) policy->Unavailable(*delay);
    moxcore::threads::GetIOBoundExecutor()->CallAsyncDelayed(
        [self = shared_from_this()] { self->Guard([&] { self->AskForOffset(); }); },
        static_cast<std::uint32_t>(delay->count()));
}

void TusUpload::AskForOffset() {
    After(session->SendWithRetries(RequestTo("HEAD", location), policy), &TusUpload::OnOffset);
}

void TusUpload::OnOffset(Answer const& answer) {
    auto const response = answer.Get();
    if (response->status == kNotFound || response->status == kGone) return CreateAnew();
    if (!IsSuccess(response->status)) return Refuse(*response);
    auto const offset = BytesIn(*response, "UPLOAD-OFFSET");
    auto const length = BytesIn(*response, "UPLOAD-LENGTH");
    if (!offset || *offset > sentTo || (length && *length != file->Size())) FailWithoutOffset();

    if (*offset < file->Size()) publicationInDoubt = false;
    if (std::exchange(contentRefused, false) && *offset == 0) {
        if (++contentRefusals > kMostContentRefusals)
            throw ResultException(kContentMismatch,
                                  "what arrives at the service is not what is sent; try again");
        // What is sent now gets a checksum of its own, whatever the earlier one was taken from.
        reader = std::make_shared<ChunkReader>(file);
        ahead = {};
        furthest = 0;
        reported = 0;
    }
    SendFrom(*offset);
}

void TusUpload::CreateAnew() {
    if (publicationInDoubt)
        throw ResultException(kUploadLost,
                              "the service has lost the upload after its last byte; look whether "
                              "the movie is in its folder before trying again");
    if (creations >= kMostCreations)
        throw ResultException(kUploadLost, "the service loses the upload each time; try again");
    key = quillocommon::Guid::CreateUnique().AsString();
    Create();
}

void TusUpload::Fail(std::exception_ptr const& exception) {
    promise.SetException(ReportException(task, exception));
}

void TusUpload::Refuse(HttpResponse& response) {
    auto const refused =
        std::make_shared<UploadResponse>(response.status, response.headers, Asset());
    refused->SetRefusal(ReportRefusal(task, response));
    promise.SetValue(refused);
}

template <class Step>
void TusUpload::Guard(Step step) {
    try {
        step();
    } catch (...) {
        Fail(std::current_exception());
    }
}

void TusUpload::After(Answer const& answer, void (TusUpload::*step)(Answer const&)) {
    answer.OnComplete([self = shared_from_this(), step](Answer const& arrived) {
        self->Guard([&] { (self.get()->*step)(arrived); });
    });
}

HttpRequest TusUpload::RequestTo(char const* method, std::string path) const {
    return {.method = method, .url = std::move(path), .headers = {{"Tus-Resumable", "1.0.0"}}};
}

TusUpload::ChunkFuture TusUpload::ReadChunk(std::uint64_t offset) {
    auto const executor = moxcore::threads::GetIOBoundExecutor();
    auto const promised = std::make_shared<moxcore::async::Promise<std::shared_ptr<Chunk const>>>();
    auto read = [source = reader, promised, offset] {
        try {
            promised->SetValue(source->Read(offset));
        } catch (...) {
            promised->SetException(std::current_exception());
        }
    };
    aheadOffset = offset;
    // One at a time: the one before may still be reading.
    if (ahead)
        static_cast<void>(ahead.Then(executor, [read](ChunkFuture const&) { read(); }));
    else
        executor->CallAsync(read);
    return promised->GetFuture();
}

void TusUpload::NoteOffset(std::uint64_t offset) {
    if (offset > furthest) {
        furthest = offset;
        policy->Progressed();
    }
    ReportProgress(offset);
}

void TusUpload::ReportProgress(std::uint64_t done) {
    // The end is told once the file is published, and not before.
    bool const worthTelling =
        done < file->Size() && done > reported && done - reported >= file->Size() / kProgressSteps;
    if (!worthTelling || !request.GetProgress()) return;
    reported = done;
    request.GetProgress()(done, file->Size());
}

}  // namespace quillosdk
