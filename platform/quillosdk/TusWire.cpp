#include "quillosdk/TusWire.h"

#include <algorithm>
#include <utility>

#include "moxcore/config/Error.h"
#include "quillocommon/Saturating.h"
#include "quillocommon/ServiceAddress.h"
#include "quillocommon/Url.h"
#include "quillosdk/Sha256.h"
#include "quillosdk/TransferManager.h"
#include "quillosdk/UploadState.h"

namespace quillosdk::tus {
namespace {

using moxcore::config::ResultException;

std::string Metadata(UploadRequest const& request) {
    auto const& path = request.Path();
    std::string text = "filename " + Base64(path.substr(path.rfind('/') + 1)) + ",folder_id " +
                       Base64(request.FolderID().AsString());
    if (!request.AutoversionID().IsNull())
        text += ",version_stack_id " + Base64(request.AutoversionID().AsString());
    return text;
}

/// Says which bytes of which movie the part holds: a service that understands it puts them there at
/// once, and has nothing to copy when the parts are joined.
std::string Place(UploadRange const& range, UploadState const& state) {
    return ",whole_id " + Base64(state.key) + ",whole_offset " +
           Base64(std::to_string(range.offset)) + ",whole_length " +
           Base64(std::to_string(state.size));
}

}  // namespace

bool IsSuccess(int status) {
    return status >= 200 && status <= 299;
}

HttpRequest RequestTo(char const* method, std::string path) {
    return {.method = method, .url = std::move(path), .headers = {{"Tus-Resumable", "1.0.0"}}};
}

HttpRequest CreationOf(UploadRange const& range, UploadState const& state,
                       UploadRequest const& request) {
    auto post = RequestTo("POST", kUploadsPath);
    post.headers.emplace_back("Upload-Length", std::to_string(range.length));
    post.headers.emplace_back("Upload-Metadata",
                              Metadata(request) + (state.isJoined ? Place(range, state) : ""));
    if (state.isJoined) post.headers.emplace_back("Upload-Concat", "partial");
    post.headers.emplace_back("Idempotency-Key", range.key);
    return post;
}

HttpRequest JoiningOf(UploadState const& state, UploadRequest const& request,
                      std::string const& contentSha256) {
    std::string parts;
    for (auto const& range : state.ranges)
        parts += (parts.empty() ? "final;" : " ") + range.location;
    auto post = RequestTo("POST", kUploadsPath);
    post.headers.emplace_back("Upload-Concat", parts);
    post.headers.emplace_back("Upload-Metadata", Metadata(request));
    post.headers.emplace_back("Quillo-Content-SHA256", contentSha256);
    return post;
}

bool Offers(HttpResponse const& response, std::string const& extension) {
    auto const found = response.headers.find("TUS-EXTENSION");
    if (!IsSuccess(response.status) || found == response.headers.end()) return false;
    auto list = "," + found->second + ",";
    list.erase(std::remove(list.begin(), list.end(), ' '), list.end());
    return list.find("," + extension + ",") != std::string::npos;
}

std::optional<std::uint64_t> BytesIn(HttpResponse const& response, char const* header) {
    auto const found = response.headers.find(header);
    if (found == response.headers.end()) return std::nullopt;
    return quillocommon::ReadCount(found->second);
}

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

void FailWithoutOffset() {
    throw ResultException(kMalformedAnswer, "the service does not tell how far the upload is");
}

void FailAsLost(bool inDoubt) {
    throw ResultException(
        kUploadLost, inDoubt ? "the service has lost the upload after its last byte; look whether "
                               "the movie is in its folder before trying again"
                             : "the service loses the upload each time; try again");
}

void FailAsDamaged() {
    throw ResultException(kContentMismatch,
                          "what arrives at the service is not what is sent; try again");
}

}  // namespace quillosdk::tus
