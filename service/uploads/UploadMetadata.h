#pragma once

#include <map>
#include <string>
#include <string_view>

namespace quilloservice {

struct NewUpload;

/// The keys and decoded values of an Upload-Metadata header. Throws ApiError 400.
std::map<std::string, std::string> ParseUploadMetadata(std::string_view header);

/// What an upload's metadata asks for. Throws ApiError 400 when a value is missing or out of form.
NewUpload ReadUploadMetadata(std::string const& header, std::int64_t length);

}  // namespace quilloservice
