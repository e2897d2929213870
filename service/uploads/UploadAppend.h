#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "service/base/Clock.h"
#include "service/base/Digest.h"
#include "service/base/File.h"
#include "service/uploads/LiveUploads.h"
#include "service/uploads/UploadRecord.h"

namespace quilloservice {

class Publisher;
class Store;

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

/// One request's body on its way into its upload: written and summed up piece by piece, confirmed,
/// and published when the upload is complete. Destroyed before its end, it leaves the upload as it
/// was last confirmed. One thread at a time, but for `GiveWay`.
class UploadAppend {
public:
    struct Parts {
        Store& store;
        Publisher& publisher;
        Clock const& clock;
    };

    /// `file` is the upload's, as long as what is confirmed of it; the lease's progress stands for
    /// that. `onOvertaken` runs when another request takes the upload over, on that one's thread.
    UploadAppend(Parts parts, UploadRecord upload, LiveUploads::Lease lease, File file,
                 AppendRequest request, std::function<void()> onOvertaken);

    [[nodiscard]] UploadRecord const& GetUpload() const { return upload; }

    /// Throws ApiError when the body goes past the upload's length, the disk is full, or another
    /// request has taken the upload over. The append is over then.
    void Take(std::string_view bytes);

    /// Ends the append, and publishes the movie when it is complete. Returns the new offset. Throws
    /// ApiError when the body was not `complete` or had another checksum.
    std::int64_t Finish(bool complete);

    /// Ends the append in favour of another request: what is not confirmed is taken back, and
    /// nothing more is written. False when it is too late: the body is there, and the movie on its
    /// way to be published. Any thread.
    bool GiveWay();

private:
    [[nodiscard]] std::int64_t GetEnd() const { return lease->GetProgress().offset; }
    void Write(std::string_view bytes);
    std::int64_t FinishBody(bool complete);
    void TakeBack();
    void Settle(bool keeps);
    void CheckNotOvertaken() const;
    void Confirm(std::int64_t offset);
    void Complete();

    Parts parts;
    UploadRecord const upload;
    AppendRequest const request;
    std::function<void()> onOvertaken;
    std::atomic<bool> finishing = false;

    std::mutex mutex;
    std::optional<LiveUploads::Lease> lease;  // mutex; nothing once the append is over
    File file;                                // mutex
    std::optional<Digest> body;               // mutex; absent where the whole movie's will do
    LiveUploads::Progress confirmed;          // mutex; what the append can be taken back to
};

}  // namespace quilloservice
