#include "service/uploads/UploadAppend.h"

#include <utility>

#include "service/base/ApiError.h"
#include "service/base/Text.h"
#include "service/store/Store.h"
#include "service/uploads/Publisher.h"

namespace quilloservice {

namespace {

// After a crash, clients that send no checksum repeat at most this much.
constexpr std::int64_t kConfirmEveryBytes = 8 << 20;

}  // namespace

UploadAppend::UploadAppend(Parts parts, UploadRecord upload, LiveUploads::Lease lease, File file,
                           AppendRequest request, std::function<void()> onOvertaken)
    : parts(parts),
      upload(std::move(upload)),
      request(std::move(request)),
      onOvertaken(std::move(onOvertaken)),
      lease(std::move(lease)),
      file(std::move(file)),
      confirmed(this->lease->GetProgress()) {
    auto const& checksum = this->request.checksum;
    if (!checksum) return;
    bool sameAsWhole =
        this->upload.confirmed == 0 && checksum->algorithm == Digest::Algorithm::Sha256;
    if (!sameAsWhole) body.emplace(checksum->algorithm);
}

void UploadAppend::Take(std::string_view bytes) {
    if (upload.published) return;
    std::scoped_lock lock(mutex);
    CheckNotOvertaken();
    try {
        if (static_cast<std::int64_t>(bytes.size()) > upload.length - GetEnd()) {
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
    LiveUploads::Progress& progress = lease->GetProgress();
    file.WriteAt(progress.offset, bytes);
    progress.digest.Update(bytes);
    if (body) body->Update(bytes);
    progress.offset += static_cast<std::int64_t>(bytes.size());
    if (!request.checksum && progress.offset - confirmed.offset >= kConfirmEveryBytes &&
        progress.offset < upload.length) {
        Confirm(progress.offset);
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
    } else if (request.checksum) {
        Digest const& digest = body ? *body : lease->GetProgress().digest;
        if (digest.Value() != request.checksum->value) {
            failure =
                ApiError::ChecksumMismatch("The body does not match its checksum; send it again.");
        }
    }
    Settle(!failure || !request.checksum);
    if (failure) throw *failure;
    std::int64_t offset = GetEnd();
    if (offset == upload.length) Complete();
    return offset;
}

bool UploadAppend::GiveWay() {
    if (finishing) return false;
    {
        std::scoped_lock lock(mutex);
        if (finishing) return false;
        if (!lease) return true;
        Revert();
        lease->KeepChecksum();
        lease.reset();
    }
    if (onOvertaken) onOvertaken();
    return true;
}

void UploadAppend::Revert() {
    file.Truncate(confirmed.offset);
    lease->GetProgress() = confirmed;
}

/// Brings the file, the store and the running checksum to the same state, with or without the body.
void UploadAppend::Settle(bool keeps) {
    if (keeps) {
        if (GetEnd() != confirmed.offset && GetEnd() < upload.length) Confirm(GetEnd());
    } else {
        Revert();
        // Parts of a body without a checksum are confirmed already.
        if (confirmed.offset != upload.confirmed) {
            file.Truncate(upload.confirmed);
            Confirm(upload.confirmed);
            return;  // the next append reads the checksum from the file
        }
    }
    lease->KeepChecksum();
}

void UploadAppend::CheckNotOvertaken() const {
    if (!lease) throw ApiError::Conflict("Another request has taken this upload over.");
}

void UploadAppend::Confirm(std::int64_t offset) {
    parts.store.Write(
        [&](Database& database) { SetConfirmed(database, upload.id, offset, parts.clock()); },
        Store::Durability::Process);
    if (offset == GetEnd()) confirmed = lease->GetProgress();
}

void UploadAppend::Complete() {
    lease->DiscardChecksum();
    Digest const& whole = lease->GetProgress().digest;
    if (request.contentSha256 && *request.contentSha256 != ToHex(whole.Value())) {
        file.Truncate(0);
        Confirm(0);
        throw ApiError::ChecksumMismatch(
            "The movie does not match its checksum; the upload starts again from offset 0.");
    }
    parts.publisher.Publish(upload, file, whole);
}

}  // namespace quilloservice
