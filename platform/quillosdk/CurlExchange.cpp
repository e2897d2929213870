#include "quillosdk/CurlExchange.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "moxcore/async/CancelledException.h"
#include "moxcore/config/Error.h"
#include "quillocommon/Url.h"

namespace quillosdk {
namespace {

constexpr long kConnectTimeoutSeconds = 10;

/// Bodies are sent in pieces of this size; curl's own default makes four times the system calls.
constexpr long kSendBufferBytes = 256L * 1024;

/// Room behind the body that its reader may look at, so that it need not copy the body for it.
constexpr std::size_t kReadAheadRoom = 64;

/// How long an answer's headers may be, trailers and interim answers included; each line counts for
/// more than it is long, since it costs more to keep.
constexpr std::size_t kMostHeaderBytes = std::size_t{64} * 1024;
constexpr std::size_t kLineCost = 128;

bool HasControlCharacter(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](unsigned char c) { return (c < 0x20 && c != '\t') || c == 0x7F; });
}

void Check(HeaderFields const& headers) {
    for (auto const& [name, value] : headers) {
        if (HasControlCharacter(name) || HasControlCharacter(value))
            throw moxcore::config::ResultException(
                kBadRequest, "the header " + name + " holds a control character");
    }
}

}  // namespace

CurlExchange::CurlExchange(HttpRequest newRequest, Shared& shared)
    : easy(curl_easy_init()),
      request(std::move(newRequest)),
      shared(shared),
      pace(request.stallTimeout, request.slowestRate) {
    if (!easy) throw std::bad_alloc();
    auto const url = quillocommon::ParseUrl(request.url);
    if (!url)
        throw moxcore::config::ResultException(kBadRequest, "the address is no http or https URL");
    if (request.commonHeaders) Check(*request.commonHeaders);
    Check(request.headers);
    SetUpConnection(url->IsLoopback());
    SetUpRequest();
}

CurlExchange::~CurlExchange() = default;

void CurlExchange::SetUpConnection(bool loopback) {
    CURL* const handle = easy.get();
    curl_easy_setopt(handle, CURLOPT_URL, request.url.c_str());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_TCP_NODELAY, 1L);
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, kConnectTimeoutSeconds);
    curl_easy_setopt(handle, CURLOPT_UPLOAD_BUFFERSIZE, kSendBufferBytes);
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, errorText);
    curl_easy_setopt(handle, CURLOPT_PRIVATE, this);
    if (loopback) curl_easy_setopt(handle, CURLOPT_PROXY, "");

    shared.sockets.SetUp(handle);
    curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, &CurlExchange::OnBegin);
    curl_easy_setopt(handle, CURLOPT_PREREQDATA, this);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &CurlExchange::OnHeader);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &CurlExchange::OnBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
    if (request.onBytesSent) {
        curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
        curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, &CurlExchange::OnProgress);
        curl_easy_setopt(handle, CURLOPT_XFERINFODATA, this);
    }
}

void CurlExchange::SetUpRequest() {
    CURL* const handle = easy.get();
    if (request.method == "HEAD") {
        curl_easy_setopt(handle, CURLOPT_NOBODY, 1L);
    } else if (request.method != "GET" || BodySize(request) > 0) {
        curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE_LARGE,
                         static_cast<curl_off_t>(BodySize(request)));
        if (request.bodySource) {
            curl_easy_setopt(handle, CURLOPT_POST, 1L);
            curl_easy_setopt(handle, CURLOPT_READFUNCTION, &CurlExchange::OnRead);
            curl_easy_setopt(handle, CURLOPT_READDATA, this);
        } else {
            // curl reads the body where it is; it copies nothing.
            curl_easy_setopt(handle, CURLOPT_POSTFIELDS, request.body ? request.body->data() : "");
        }
        curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, request.method.c_str());
        AddHeader("Expect:");  // no wait for a "100 Continue" before the body
        if (std::none_of(request.headers.begin(), request.headers.end(),
                         [](auto const& h) { return UpperCase(h.first) == "CONTENT-TYPE"; }))
            AddHeader("Content-Type:");  // none, rather than curl's guess
    }
    if (request.commonHeaders) AddHeaders(*request.commonHeaders);
    AddHeaders(request.headers);
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers.get());
}

void CurlExchange::AddHeaders(HeaderFields const& fields) {
    for (auto const& [name, value] : fields) {
        std::string line = name;
        line.append(value.empty() ? ";" : ": ").append(value);
        AddHeader(line);
    }
}

void CurlExchange::AddHeader(std::string const& line) {
    curl_slist* const longer = curl_slist_append(headers.get(), line.c_str());
    if (!longer) throw std::bad_alloc();
    static_cast<void>(headers.release());  // the longer list has taken it over
    headers.reset(longer);
}

std::size_t CurlExchange::OnBody(char* data, std::size_t size, std::size_t count, void* self) {
    auto& exchange = *static_cast<CurlExchange*>(self);
    std::string_view const bytes(data, size * count);
    try {
        if (exchange.Pipe() && exchange.HasSucceeded()) return exchange.HandOn(bytes);
        if (!exchange.Keep(bytes)) return 0;  // ends the transfer
        exchange.pace.Receive(exchange.shared.clock(), bytes.size());
        return bytes.size();
    } catch (...) {  // must not pass through curl
        exchange.thrown = std::current_exception();
        return 0;
    }
}

std::size_t CurlExchange::HandOn(std::string_view bytes) {
    switch (Pipe()->Offer(bytes)) {
        case BodyPipe::Offered::Taken:
            pace.Receive(shared.clock(), bytes.size());
            return bytes.size();
        case BodyPipe::Offered::Full:
            pace.Pause(shared.clock());
            return CURL_WRITEFUNC_PAUSE;
        case BodyPipe::Offered::Closed:
            break;
    }
    throw moxcore::async::CancelledException();
}

bool CurlExchange::Keep(std::string_view bytes) {
    std::string& body = response->body;
    tooLarge = bytes.size() > request.maxAnswerBytes - body.size();
    if (tooLarge) return false;
    curl_off_t announced = -1;
    if (body.empty() &&
        curl_easy_getinfo(Handle(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced) == CURLE_OK &&
        announced > 0)
        body.reserve(std::min(static_cast<std::size_t>(announced), request.maxAnswerBytes) +
                     kReadAheadRoom);
    body.append(bytes);
    return true;
}

void CurlExchange::Resume() {
    pace.Resume(shared.clock());
    curl_easy_pause(Handle(), CURLPAUSE_CONT);
}

/// curl sends a request again by itself when a connection that it had used before is closed without
/// an answer. What may change something, or has a body that has been sent, is its sender's to
/// repeat.
bool CurlExchange::MayBeRepeated() const {
    return (request.method == "GET" || request.method == "HEAD") && BodySize(request) == 0;
}

int CurlExchange::OnBegin(void* self, char*, char*, int, int localPort) {
    auto& exchange = *static_cast<CurlExchange*>(self);
    if (std::exchange(exchange.hasBegun, true) && !exchange.MayBeRepeated())
        return CURL_PREREQFUNC_ABORT;
    exchange.socket = exchange.shared.sockets.At(localPort);
    exchange.pace.Begin(exchange.shared.clock(), BodySize(exchange.request));
    if (exchange.onBegin) exchange.onBegin();
    return CURL_PREREQFUNC_OK;
}

bool CurlExchange::IsTooSlow() {
    auto const now = shared.clock();
    if (now < pace.NextLook()) return false;
    if (pace.AwaitsAcknowledgement()) pace.Acknowledge(now, AcknowledgedBytes());
    return now >= pace.Deadline();
}

/// The bytes of the body that the system has taken, less those not acknowledged yet: on a slow line
/// that may be megabytes, which it takes all at once.
std::uint64_t CurlExchange::AcknowledgedBytes() const {
    curl_off_t taken = 0;
    if (curl_easy_getinfo(Handle(), CURLINFO_SIZE_UPLOAD_T, &taken) != CURLE_OK) return 0;
    auto const bytes = static_cast<std::uint64_t>(taken);
    return bytes - std::min(bytes, CurlSockets::Unacknowledged(socket));
}

bool CurlExchange::HasSucceeded() const {
    long status = 0;
    curl_easy_getinfo(Handle(), CURLINFO_RESPONSE_CODE, &status);
    return status >= 200 && status <= 299;
}

std::size_t CurlExchange::OnRead(char* buffer, std::size_t size, std::size_t count, void* self) {
    auto& exchange = *static_cast<CurlExchange*>(self);
    auto const& source = *exchange.request.bodySource;
    auto const wanted = std::min<std::uint64_t>(size * count, source.Size() - exchange.bytesRead);
    try {
        source.Read(exchange.bytesRead, {buffer, static_cast<std::size_t>(wanted)});
    } catch (...) {  // must not pass through curl
        exchange.thrown = std::current_exception();
        return CURL_READFUNC_ABORT;
    }
    exchange.bytesRead += wanted;
    return static_cast<std::size_t>(wanted);
}

int CurlExchange::OnProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent) {
    auto& exchange = *static_cast<CurlExchange*>(self);
    if (sent > 0 && static_cast<std::uint64_t>(sent) != exchange.bytesSent) {
        exchange.bytesSent = static_cast<std::uint64_t>(sent);
        try {
            exchange.request.onBytesSent(exchange.bytesSent);
        } catch (...) {  // must not pass through curl
            exchange.thrown = std::current_exception();
            return 1;  // ends the transfer
        }
    }
    return 0;
}

std::size_t CurlExchange::OnHeader(char* data, std::size_t size, std::size_t count, void* self) {
    auto& exchange = *static_cast<CurlExchange*>(self);
    exchange.headerBytes += size * count + kLineCost;
    exchange.tooLarge = exchange.headerBytes > kMostHeaderBytes;
    if (exchange.tooLarge) return 0;  // ends the transfer
    try {
        exchange.ReadHeaderLine({data, size * count});
    } catch (std::bad_alloc const&) {
        return 0;
    }
    return size * count;
}

void CurlExchange::ReadHeaderLine(std::string_view line) {
    bool const isInterim = line.starts_with("HTTP/1.1 1") || line.starts_with("HTTP/1.0 1");
    if (line.starts_with("HTTP/")) isFinal = !isInterim;
    if (isFinal) pace.Receive(shared.clock(), line.size());
    head.ReadLine(line);
}

void CurlExchange::Finish(std::unique_ptr<CurlExchange> exchange, CURLcode code) {
    auto promise = std::move(exchange->promise);
    // curl takes an answer that is cut in its headers for one without a body.
    if (code == CURLE_OK && !exchange->head.IsComplete()) code = CURLE_PARTIAL_FILE;
    if (code == CURLE_OK) {
        long status = 0;
        curl_easy_getinfo(exchange->Handle(), CURLINFO_RESPONSE_CODE, &status);
        exchange->response->status = static_cast<int>(status);
        exchange->response->headers = std::move(exchange->head.Fields());
        auto response = std::move(exchange->response);
        exchange.reset();
        promise.SetValue(std::move(response));
    } else if (exchange->thrown) {
        auto thrown = exchange->thrown;
        exchange.reset();
        promise.SetException(std::move(thrown));
    } else {
        auto const result = exchange->ResultOf(code);
        auto const message = exchange->MessageOf(code);
        exchange.reset();
        promise.SetFailed(result, message);
    }
}

TransportResult CurlExchange::ResultOf(CURLcode code) const {
    switch (code) {
        case CURLE_URL_MALFORMAT:
        case CURLE_PEER_FAILED_VERIFICATION:
            return kBadRequest;
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_CONNECT:
        case CURLE_SSL_CONNECT_ERROR:
            return kNoConnection;
        case CURLE_OPERATION_TIMEDOUT:
            return hasBegun ? kConnectionLost : kNoConnection;
        case CURLE_WEIRD_SERVER_REPLY:
        case CURLE_UNSUPPORTED_PROTOCOL:  // no status line: curl takes it for HTTP/0.9
        case CURLE_BAD_CONTENT_ENCODING:
            return kMalformedAnswer;
        default:
            return tooLarge ? kAnswerTooLarge : kConnectionLost;
    }
}

std::string CurlExchange::MessageOf(CURLcode code) const {
    if (tooLarge)
        return headerBytes > kMostHeaderBytes
                   ? "the answer's headers were too long"
                   : "the answer was longer than " + std::to_string(request.maxAnswerBytes) +
                         " bytes";
    if (code == CURLE_ABORTED_BY_CALLBACK)
        return "the connection was closed before the service answered";
    if (code == CURLE_OPERATION_TIMEDOUT && hasBegun)
        return "the service took too long, or the connection is too slow";
    return errorText[0] ? errorText : curl_easy_strerror(code);
}

}  // namespace quillosdk
