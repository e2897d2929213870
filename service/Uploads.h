#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "service/Clock.h"
#include "service/Digest.h"
#include "service/LiveUploads.h"
#include "service/Publisher.h"
#include "service/UploadRecord.h"

namespace quilloservice {

class ChangeFeed;
class DataDirectory;
class Store;

/// What a client asks for when it creates an upload, its values checked for form.
struct NewUpload {
    std::string name;
    std::string folder;
    std::optional<std::string> stack;
    std::string mediaType;
    std::string metadata;
    std::int64_t length = 0;
};

/// The head of a PATCH.
struct AppendRequest {
    struct Checksum {
        Digest::Algorithm algorithm;
        std::string value;  ///< raw
    };

    std::int64_t offset = 0;
    std::optional<std::int64_t> bodyLength;    ///< nothing when it is not announced
    std::optional<Checksum> checksum;          ///< of the body
    std::optional<std::string> contentSha256;  ///< of the whole movie, hex
};

/// Feeds a request's body to the function in pieces for as long as that returns true. Returns
/// whether the body came to its end.
using BodyReader = std::function<bool(const std::function<bool(std::string_view)>&)>;

/// Resumable uploads. Every function throws ApiError when the answer is an error. Any thread; two
/// requests that append to one upload do not wait for each other, the second is refused.
class Uploads {
public:
    static constexpr std::int64_t kMaxBytes = std::int64_t{1} << 40;
    static constexpr std::int64_t kForgetAfterSeconds = 7 * 24 * 3600;

    Uploads(const DataDirectory& directory, Store& store, ChangeFeed& changes, Clock clock);

    /// Records what an earlier process published without recording it, and forgets old uploads.
    void Recover();

    /// Makes an upload, or finds the one that the same request with the same key made. Returns its
    /// ID.
    std::string Create(const std::string& user, const NewUpload& request,
                       const std::optional<std::string>& idempotencyKey);

    [[nodiscard]] UploadRecord Get(const std::string& user, const std::string& id) const;

    /// Appends the body and publishes the movie when it is complete. Returns the new offset.
    std::int64_t Append(const std::string& user, const std::string& id,
                        const AppendRequest& request, const BodyReader& body);

    /// The movie that the upload became.
    [[nodiscard]] PublishedAsset Asset(const std::string& user, const std::string& id) const;

private:
    void ForgetOld();
    void Confirm(const std::string& id, std::int64_t offset);
    std::int64_t AppendTo(const UploadRecord& upload, LiveUploads::Lease& live,
                          const AppendRequest& request, const BodyReader& body);
    void Complete(const UploadRecord& upload, File& file, LiveUploads::Lease& live,
                  const AppendRequest& request);

    const DataDirectory& directory_;
    Store& store_;
    Clock clock_;
    Publisher publisher_;
    LiveUploads live_;
};

}  // namespace quilloservice
