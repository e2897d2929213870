#include "service/BodyWriter.h"

#include <algorithm>
#include <cstring>

#include "service/ApiError.h"
#include "service/File.h"

namespace quilloservice {

namespace {

constexpr std::size_t kBufferBytes = 256 * 1024;

}  // namespace

BodyWriter::BodyWriter(File& file, Digest& whole, std::int64_t start, std::int64_t limit,
                       std::optional<Digest::Algorithm> bodyAlgorithm)
    : file_(file),
      whole_(whole),
      buffer_(std::make_unique_for_overwrite<char[]>(kBufferBytes)),
      end_(start),
      limit_(limit) {
    bool sameAsWhole = start == 0 && bodyAlgorithm == Digest::Algorithm::Sha256;
    if (bodyAlgorithm && !sameAsWhole) body_.emplace(*bodyAlgorithm);
}

void BodyWriter::Take(std::string_view bytes) {
    std::int64_t room = limit_ - end_ - static_cast<std::int64_t>(buffered_);
    if (static_cast<std::int64_t>(bytes.size()) > room) {
        overrun_ = true;
        throw ApiError::TooLarge("The body goes past the upload's length.");
    }
    while (!bytes.empty()) {
        std::size_t count = std::min(bytes.size(), kBufferBytes - buffered_);
        std::memcpy(buffer_.get() + buffered_, bytes.data(), count);
        buffered_ += count;
        bytes.remove_prefix(count);
        if (buffered_ == kBufferBytes) Flush();
    }
}

void BodyWriter::Flush() {
    std::string_view pending(buffer_.get(), buffered_);
    file_.WriteAt(end_, pending);
    whole_.Update(pending);
    if (body_) body_->Update(pending);
    end_ += static_cast<std::int64_t>(buffered_);
    buffered_ = 0;
    if (onWritten) onWritten(end_);
}

std::string BodyWriter::BodyChecksum() const {
    return body_ ? body_->Value() : whole_.Value();
}

}  // namespace quilloservice
