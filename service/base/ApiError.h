#pragma once

#include <stdexcept>
#include <string>

namespace quilloservice {

/// A request that is answered with an error: the status and code of the wire's table of errors, and
/// a message for the developer at the other end. Holds nothing secret; it goes out as it is.
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
    static ApiError StorageFull() {
        return {507, "insufficient_storage",
                "The service's disk is full. Free some space and go on from the offset that HEAD "
                "tells."};
    }

    /// Of a creation: nothing is there yet that could go on.
    static ApiError DoesNotFit() {
        return {
            507, "insufficient_storage",
            "The movie does not fit on the service's disk beside the uploads that are under way. "
            "Free some space there, or wait for their end."};
    }

    int status;
    std::string code;
    int retryAfter;  ///< seconds after which it may go better; 0: not known
};

}  // namespace quilloservice
