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

class ContentHashes;
class Publisher;
class Store;

/// The headers of a PATCH.
struct AppendRequest {
    struct Checksum {
        Digest::Algorithm algorithm;
        std::string value;  ///< raw
    };

    std::int64_t offset = 0;
    std::optional<std::int64_t> bodyLength;    ///< nothing if not announced
    std::optional<Checksum> checksum;          ///< of the body
    std::optional<std::string> contentSha256;  ///< of the whole movie, hex
};

/// Appends one request's body to its upload: writes and checksums it piece by piece, confirms it in
/// the store, and publishes the movie if the upload is one and complete. Destroying it before
/// `Finish` leaves the upload at the last confirmed offset. One thread at a time, except `GiveWay`.
class UploadAppend {
public:
    struct Parts {
        Store& store;
        Publisher& publisher;
        ContentHashes& hashes;
        Clock const& clock;
    };

    /// `file` is the upload's file; nothing for a complete upload, which takes no more bytes.
    /// `onOvertaken` is called when another request takes the upload over, on its thread.
    UploadAppend(Parts parts, UploadRecord upload, LiveUploads::Lease lease,
                 std::optional<File> file, AppendRequest request,
                 std::function<void()> onOvertaken);

    [[nodiscard]] UploadRecord const& GetUpload() const { return upload; }

    /// Writes a piece of the body. Throws ApiError, which ends the append, if the body exceeds the
    /// upload's length, the disk is full, or another request has taken the upload over.
    void Take(std::string_view bytes);

    /// Ends the append and publishes the movie if it is complete. Returns the new offset. Throws
    /// ApiError if the body was not `complete` or its checksum does not match.
    std::int64_t Finish(bool complete);

    /// Ends the append in favour of another request and reverts it to the confirmed offset. False
    /// if it is too late, because the body is complete and `Finish` is running. Any thread.
    bool GiveWay();

private:
    void Write(std::string_view bytes);
    std::int64_t FinishBody(bool complete);
    void Revert();
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
    std::optional<LiveUploads::Lease> lease;  // mutex; nothing after the append's end
    std::optional<File> file;                 // mutex
    std::optional<Digest> body;               // mutex; of what was written, if it is checked
    std::int64_t end;                         // mutex; where the next byte goes in the upload
    std::int64_t confirmed;                   // mutex; what `end` is reverted to
};

}  // namespace quilloservice
