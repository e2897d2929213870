#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "quillosdk/RetryPolicy.h"
#include "quillosdk/Transport.h"

namespace quillosdk {

class UploadRequest;
struct UploadRange;
struct UploadState;

// How uploads are put into tus requests, and read from their answers, and why they fail. Any
// thread.
namespace tus {

constexpr char kUploadsPath[] = "/v1/uploads";

/// A movie has taken its time to export, and its upload may have lasted long: more patience than
/// for a list.
constexpr RetryLimits kLimits{.attempts = 20, .patience = std::chrono::seconds(300)};

/// How often the service may find another checksum for the whole.
constexpr int kMostContentRefusals = 2;

constexpr int kNotFound = 404;
constexpr int kConflict = 409;
constexpr int kGone = 410;
constexpr int kChecksumMismatch = 460;

[[nodiscard]] bool IsSuccess(int status);

/// A request to a path at the service, with the header that each has.
[[nodiscard]] HttpRequest RequestTo(char const* method, std::string path);

/// The request that creates the upload of a range: the movie itself, or a part of it.
[[nodiscard]] HttpRequest CreationOf(UploadRange const& range, UploadState const& state,
                                     UploadRequest const& request);

/// The request that makes the movie of its parts, all complete.
[[nodiscard]] HttpRequest JoiningOf(UploadState const& state, UploadRequest const& request,
                                    std::string const& contentSha256);

/// Whether an answer to OPTIONS offers the extension.
[[nodiscard]] bool Offers(HttpResponse const& response, std::string const& extension);

/// A header that holds a number of bytes.
[[nodiscard]] std::optional<std::uint64_t> BytesIn(HttpResponse const& response,
                                                   char const* header);

/// The path to which a creation's Location leads. Fails for one at another origin: the token goes
/// there.
[[nodiscard]] std::string PathIn(HttpResponse const& response);

[[noreturn]] void FailWithoutOffset();
[[noreturn]] void FailAsLost(bool inDoubt);
[[noreturn]] void FailAsDamaged();

}  // namespace tus
}  // namespace quillosdk
