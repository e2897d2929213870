#pragma once

#include <map>
#include <string>
#include <string_view>

namespace quilloservice {

struct NewUpload;

/// Parses an Upload-Metadata header into keys and decoded values. Throws ApiError 400.
std::map<std::string, std::string> ParseUploadMetadata(std::string_view header);

/// Reads a new upload from its headers. Throws ApiError 400 if a value is missing or malformed.
NewUpload ReadUploadMetadata(std::string const& header, std::int64_t length);

}  // namespace quilloservice
