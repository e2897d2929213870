#pragma once

#include <stdexcept>
#include <string>

namespace quilloservice {

/// An error response: status and code as in the table of docs/service-api.md, and a message for the
/// client's developer. The message is sent unchanged, so it must not contain secrets.
class ApiError : public std::runtime_error {
public:
    ApiError(int httpStatus, std::string errorCode, std::string const& message,
             int retrySeconds = 0)
        : std::runtime_error(message),
          status(httpStatus),
          code(std::move(errorCode)),
          retryAfter(retrySeconds) {}

    static ApiError BadRequest(std::string const& message) { return {400, "bad_request", message}; }
    static ApiError Forbidden(std::string const& message) { return {403, "forbidden", message}; }
    static ApiError NotFound(std::string const& message) { return {404, "not_found", message}; }
    static ApiError Conflict(std::string const& message) { return {409, "conflict", message}; }
    static ApiError TooLarge(std::string const& message) { return {413, "too_large", message}; }
    static ApiError ChecksumMismatch(std::string const& message) {
        return {460, "checksum_mismatch", message};
    }
    static ApiError StoreUnavailable() {
        return {503, "unavailable", "The service's database does not respond; try again later.", 2};
    }
    static ApiError StorageFull() {
        return {507, "insufficient_storage",
                "The service's disk is full. Free some space and continue from the offset that "
                "HEAD reports."};
    }

    /// For the creation of an upload. StorageFull is for an upload that exists.
    static ApiError DoesNotFit() {
        return {
            507, "insufficient_storage",
            "The movie does not fit on the service's disk beside the unfinished uploads. Free some "
            "space there, or wait for the uploads."};
    }

    int status;
    std::string code;
    int retryAfter;  ///< seconds after which to retry; 0: unknown
};

}  // namespace quilloservice
