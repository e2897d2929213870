#include "service/uploads/UploadAppend.h"

#include <utility>

#include "service/base/ApiError.h"
#include "service/base/Text.h"
#include "service/store/Store.h"
#include "service/uploads/ContentHash.h"
#include "service/uploads/Publisher.h"

namespace quilloservice {

namespace {

// After a crash, clients that send no checksum repeat at most this much.
constexpr std::int64_t kConfirmEveryBytes = 8 << 20;

}  // namespace

UploadAppend::UploadAppend(Parts parts, UploadRecord upload, LiveUploads::Lease lease,
                           std::optional<File> file, AppendRequest request,
                           std::function<void()> onOvertaken)
    : parts(parts),
      upload(std::move(upload)),
      request(std::move(request)),
      onOvertaken(std::move(onOvertaken)),
      lease(std::move(lease)),
      file(std::move(file)),
      end(this->upload.confirmed),
      confirmed(end) {
    if (this->request.checksum) body.emplace(this->request.checksum->algorithm);
}

void UploadAppend::Take(std::string_view bytes) {
    if (upload.published) return;
    std::scoped_lock lock(mutex);
    CheckNotOvertaken();
    try {
        if (static_cast<std::int64_t>(bytes.size()) > upload.length - end) {
            throw ApiError::TooLarge("The body exceeds the upload's length.");
        }
        Write(bytes);
    } catch (ApiError const& error) {
        // No part of a body that is too long is kept.
        Settle(!request.checksum && error.status != 413);
        lease.reset();
        throw;
    } catch (...) {
        lease.reset();
        throw;
    }
}

void UploadAppend::Write(std::string_view bytes) {
    if (bytes.empty()) return;
    file->WriteAt(upload.place + end, bytes);
    if (body) body->Update(bytes);
    end += static_cast<std::int64_t>(bytes.size());
    if (!request.checksum && end - confirmed >= kConfirmEveryBytes && end < upload.length) {
        Confirm(end);
    }
}

std::int64_t UploadAppend::Finish(bool complete) {
    finishing = true;
    std::scoped_lock lock(mutex);
    CheckNotOvertaken();
    try {
        std::int64_t offset = upload.published ? upload.length : FinishBody(complete);
        lease.reset();
        return offset;
    } catch (...) {
        lease.reset();
        throw;
    }
}

std::int64_t UploadAppend::FinishBody(bool complete) {
    std::optional<ApiError> failure;
    if (!complete) {
        failure = ApiError::BadRequest("The connection ended before the body did.");
    } else if (request.checksum && body->Value() != request.checksum->value) {
        failure =
            ApiError::ChecksumMismatch("The body does not match its checksum; send it again.");
    }
    Settle(!failure || !request.checksum);
    if (failure) throw *failure;
    if (end == upload.length && upload.kind == UploadKind::Movie) Complete();
    return end;
}

bool UploadAppend::GiveWay() {
    if (finishing) return false;
    {
        std::scoped_lock lock(mutex);
        if (finishing) return false;
        if (!lease) return true;
        Revert();
        lease.reset();
    }
    if (onOvertaken) onOvertaken();
    return true;
}

/// Bytes beyond the end in a file that is shared with others are written over later.
void UploadAppend::Revert() {
    if (file && upload.OwnsFile()) file->Truncate(confirmed);
    end = confirmed;
}

/// Brings the file and the store to the same state, with or without the body.
void UploadAppend::Settle(bool keeps) {
    if (!keeps) {
        // Parts of a body without a checksum are confirmed already.
        if (confirmed != upload.confirmed) Confirm(upload.confirmed);
        return Revert();
    }
    // A movie's last byte is confirmed by its publication.
    bool atOnce = end < upload.length || upload.kind == UploadKind::Part;
    if (end != confirmed && atOnce) Confirm(end);
}

void UploadAppend::CheckNotOvertaken() const {
    if (!lease) throw ApiError::Conflict("Another request has taken this upload over.");
}

void UploadAppend::Confirm(std::int64_t offset) {
    parts.hashes.Follow(upload.file, [&] {
        return parts.store.Write(
            [&](Database& database) {
                SetConfirmed(database, upload.id, offset, parts.clock());
                return ConfirmedFront(database, upload.file);
            },
            Store::Durability::Process);
    });
    confirmed = offset;
}

void UploadAppend::Complete() {
    Digest whole = parts.hashes.Finish(upload.file, upload.length);
    if (request.contentSha256 && *request.contentSha256 != ToHex(whole.Value())) {
        file->Truncate(0);
        Confirm(0);
        throw ApiError::ChecksumMismatch(
            "The movie does not match its checksum; the upload starts again from offset 0.");
    }
    parts.hashes.Drop(upload.file);
    parts.publisher.Publish(upload, *file, whole);
}

}  // namespace quilloservice
