#include "service/uploads/UploadMetadata.h"

#include <algorithm>

#include "service/base/ApiError.h"
#include "service/base/Text.h"
#include "service/uploads/Uploads.h"

namespace quilloservice {

namespace {

constexpr std::size_t kLongestName = 1024;

bool IsMediaType(std::string_view text) {
    auto token = [](std::string_view part) {
        constexpr std::string_view kOthers = "!#$&-^_.+";
        return !part.empty() && std::all_of(part.begin(), part.end(), [&](char c) {
            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                   kOthers.find(c) != std::string_view::npos;
        });
    };
    std::size_t slash = text.find('/');
    return text.size() <= 127 && slash != std::string_view::npos && token(text.substr(0, slash)) &&
           token(text.substr(slash + 1));
}

bool IsKey(std::string_view key) {
    return !key.empty() &&
           std::all_of(key.begin(), key.end(), [](char c) { return c > ' ' && c < 0x7F; });
}

ApiError Wrong(std::string_view key, std::string const& why) {
    return ApiError::BadRequest("Upload-Metadata: " + std::string(key) + " " + why);
}

using Values = std::map<std::string, std::string>;

/// Reads what movies and parts have in common, and checks what is there.
NewUpload ReadValues(Values& values, std::string const& header, std::int64_t length) {
    NewUpload upload{.name = values["filename"],
                     .folder = FolderId::ParseOrNil(values["folder_id"]),
                     .mediaType = values["filetype"],
                     .metadata = header,
                     .length = length};
    if (upload.name.size() > kLongestName) throw Wrong("filename", "is longer than 1,024 bytes.");
    if (!IsShowableText(upload.name)) throw Wrong("filename", "has to be UTF-8 without NUL.");
    if (upload.mediaType.empty()) upload.mediaType = "video/mp4";
    if (!IsMediaType(upload.mediaType)) throw Wrong("filetype", "has to be a media type.");
    if (std::string const& text = values["version_stack_id"]; !text.empty()) {
        std::optional<StackId> stack = StackId::Parse(text);
        if (!stack) throw Wrong("version_stack_id", "has to be a lower-case UUID.");
        if (!stack->IsNil()) upload.stack = stack;
    }
    return upload;
}

std::optional<NewUpload::Place> ReadPlace(Values& values, std::int64_t length) {
    if (values["whole_id"].empty()) return std::nullopt;
    std::optional<WholeId> whole = WholeId::Parse(values["whole_id"]);
    if (!whole) throw Wrong("whole_id", "has to be a lower-case UUID.");
    std::optional<std::int64_t> offset = ParseNumber(values["whole_offset"]);
    std::optional<std::int64_t> wholeLength = ParseNumber(values["whole_length"]);
    if (!offset) throw Wrong("whole_offset", "has to be a number of bytes.");
    if (!wholeLength || *wholeLength > Uploads::kMaxBytes) {
        throw Wrong("whole_length", "has to be the number of bytes of a movie.");
    }
    if (*offset > *wholeLength || length > *wholeLength - *offset) {
        throw Wrong("whole_length", "ends before the part does.");
    }
    return NewUpload::Place{*whole, *offset, *wholeLength};
}

}  // namespace

std::map<std::string, std::string> ParseUploadMetadata(std::string_view header) {
    std::map<std::string, std::string> values;
    while (!header.empty()) {
        std::size_t comma = std::min(header.find(','), header.size());
        std::string_view pair = header.substr(0, comma);
        header.remove_prefix(std::min(comma + 1, header.size()));
        pair.remove_prefix(std::min(pair.find_first_not_of(' '), pair.size()));
        std::size_t space = std::min(pair.find(' '), pair.size());
        std::string_view key = pair.substr(0, space);
        if (!IsKey(key)) {
            throw ApiError::BadRequest("Upload-Metadata has to be pairs of a key and a value.");
        }
        auto value = FromBase64(pair.substr(std::min(space + 1, pair.size())));
        if (!value) throw Wrong(key, "has to be base64.");
        if (!values.emplace(key, *std::move(value)).second) throw Wrong(key, "is there twice.");
    }
    return values;
}

NewUpload ReadUploadMetadata(std::string const& header, std::int64_t length) {
    Values values = ParseUploadMetadata(header);
    NewUpload upload = ReadValues(values, header, length);
    if (upload.name.empty()) throw Wrong("filename", "is missing.");
    if (values["folder_id"].empty()) throw Wrong("folder_id", "is missing.");
    return upload;
}

NewUpload ReadPartMetadata(std::string const& header, std::int64_t length) {
    Values values = ParseUploadMetadata(header);
    NewUpload upload = ReadValues(values, header, length);
    upload.isPart = true;
    upload.namesFolder = !values["folder_id"].empty();
    if (!upload.namesFolder) upload.stack.reset();  // without a folder, none can be reserved
    upload.place = ReadPlace(values, length);
    return upload;
}

std::vector<UploadId> ReadConcat(std::string_view header) {
    constexpr std::string_view kFinal = "final;";
    if (!header.starts_with(kFinal)) {
        throw ApiError::BadRequest(
            "Upload-Concat has to be \"partial\", or \"final;\" and addresses.");
    }
    header.remove_prefix(kFinal.size());
    std::vector<UploadId> ids;
    while (!header.empty()) {
        std::size_t blank = std::min(header.find(' '), header.size());
        std::string_view address = header.substr(0, blank);
        header.remove_prefix(std::min(blank + 1, header.size()));
        if (address.empty()) continue;
        // Whatever lies before the path: no other service's upload has the same ID.
        std::optional<UploadId> id = UploadId::Parse(address.substr(address.rfind('/') + 1));
        if (!id) throw ApiError::BadRequest("Upload-Concat names something that is no upload.");
        ids.push_back(*std::move(id));
    }
    return ids;
}

}  // namespace quilloservice
