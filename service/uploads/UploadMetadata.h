#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "service/store/Ids.h"

namespace quilloservice {

struct NewUpload;

/// Parses an Upload-Metadata header into keys and decoded values. Throws ApiError 400.
std::map<std::string, std::string> ParseUploadMetadata(std::string_view header);

/// Reads a new movie from its headers. Throws ApiError 400 if a value is missing or malformed.
NewUpload ReadUploadMetadata(std::string const& header, std::int64_t length);

/// Reads a part of a movie from its headers. It may lack the movie's values, and may have its place
/// in the movie. Throws ApiError 400 if a value is malformed.
NewUpload ReadPartMetadata(std::string const& header, std::int64_t length);

/// The uploads that the header Upload-Concat of a joined movie names, "final;ADDRESS ADDRESS...".
/// Throws ApiError 400 if it is malformed.
std::vector<UploadId> ReadConcat(std::string_view header);

}  // namespace quilloservice
