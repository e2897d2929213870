#include "service/uploads/UploadAppend.h"

#include <utility>

#include "service/base/ApiError.h"
#include "service/base/Text.h"
#include "service/store/Store.h"
#include "service/uploads/Publisher.h"

namespace quilloservice {

namespace {

// How much of an upload without checksums a killed service asks for again, at most.
constexpr std::int64_t kConfirmEveryBytes = 8 << 20;

}  // namespace

UploadAppend::UploadAppend(Parts parts, UploadRecord upload, LiveUploads::Lease lease, File file,
                           AppendRequest request, std::function<void()> onOvertaken)
    : parts_(parts),
      upload_(std::move(upload)),
      request_(std::move(request)),
      onOvertaken_(std::move(onOvertaken)),
      lease_(std::move(lease)),
      file_(std::move(file)),
      confirmed_(lease_->progress()) {
    if (!request_.checksum) return;
    bool sameAsWhole =
        upload_.confirmed == 0 && request_.checksum->algorithm == Digest::Algorithm::Sha256;
    if (!sameAsWhole) body_.emplace(request_.checksum->algorithm);
}

void UploadAppend::Take(std::string_view bytes) {
    if (upload_.published) return;
    std::scoped_lock lock(mutex_);
    CheckNotOvertaken();
    try {
        if (static_cast<std::int64_t>(bytes.size()) > upload_.length - end()) {
            throw ApiError::TooLarge("The body goes past the upload's length.");
        }
        Write(bytes);
    } catch (ApiError const& error) {
        // Of a body that is longer than it may be nothing can be meant.
        Settle(!request_.checksum && error.status != 413);
        lease_.reset();
        throw;
    } catch (...) {
        lease_.reset();
        throw;
    }
}

void UploadAppend::Write(std::string_view bytes) {
    LiveUploads::Progress& progress = lease_->progress();
    file_.WriteAt(progress.offset, bytes);
    progress.digest.Update(bytes);
    if (body_) body_->Update(bytes);
    progress.offset += static_cast<std::int64_t>(bytes.size());
    if (!request_.checksum && progress.offset - confirmed_.offset >= kConfirmEveryBytes &&
        progress.offset < upload_.length) {
        Confirm(progress.offset);
    }
}

std::int64_t UploadAppend::Finish(bool complete) {
    finishing_ = true;
    std::scoped_lock lock(mutex_);
    CheckNotOvertaken();
    try {
        std::int64_t offset = upload_.published ? upload_.length : FinishBody(complete);
        lease_.reset();
        return offset;
    } catch (...) {
        lease_.reset();
        throw;
    }
}

std::int64_t UploadAppend::FinishBody(bool complete) {
    std::optional<ApiError> failure;
    if (!complete) {
        failure = ApiError::BadRequest("The connection ended before the body did.");
    } else if (request_.checksum) {
        Digest const& digest = body_ ? *body_ : lease_->progress().digest;
        if (digest.Value() != request_.checksum->value) {
            failure = ApiError::ChecksumMismatch(
                "The body arrived with another checksum than the one announced; send it again.");
        }
    }
    Settle(!failure || !request_.checksum);
    if (failure) throw *failure;
    std::int64_t offset = end();
    if (offset == upload_.length) Complete();
    return offset;
}

bool UploadAppend::GiveWay() {
    if (finishing_) return false;
    {
        std::scoped_lock lock(mutex_);
        if (finishing_) return false;
        if (!lease_) return true;
        TakeBack();
        lease_->Keep();
        lease_.reset();
    }
    if (onOvertaken_) onOvertaken_();
    return true;
}

void UploadAppend::TakeBack() {
    file_.Truncate(confirmed_.offset);
    lease_->progress() = confirmed_;
}

/// Brings the file, the store and the running checksum to one state: with what was written, or
/// without it.
void UploadAppend::Settle(bool keeps) {
    if (keeps) {
        if (end() != confirmed_.offset && end() < upload_.length) Confirm(end());
    } else {
        TakeBack();
        // Of a body without a checksum parts were confirmed already.
        if (confirmed_.offset != upload_.confirmed) {
            file_.Truncate(upload_.confirmed);
            Confirm(upload_.confirmed);
            return;  // the checksum of what is left is found from the file
        }
    }
    lease_->Keep();
}

void UploadAppend::CheckNotOvertaken() const {
    if (!lease_) throw ApiError::Conflict("Another request has taken this upload over.");
}

void UploadAppend::Confirm(std::int64_t offset) {
    parts_.store.Write(
        [&](Database& database) { SetConfirmed(database, upload_.id, offset, parts_.clock()); },
        Store::Durability::Process);
    if (offset == end()) confirmed_ = lease_->progress();
}

void UploadAppend::Complete() {
    lease_->Forget();
    Digest const& whole = lease_->progress().digest;
    if (request_.contentSha256 && *request_.contentSha256 != ToHex(whole.Value())) {
        file_.Truncate(0);
        Confirm(0);
        throw ApiError::ChecksumMismatch(
            "The movie was stored with another checksum than the one announced; the upload starts "
            "again from offset 0.");
    }
    parts_.publisher.Publish(upload_, file_, whole);
}

}  // namespace quilloservice
