#pragma once

#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>

#include "moxcore/Export.h"

namespace moxcore::config {

/// A 32-bit result; negative means failure, and the high bits tell whose it is.
using Result = std::int32_t;

/// The result of a failure that carries none of its own.
inline constexpr Result kUnknownFailure = static_cast<Result>(0xA00F0001);

/// A failure with a 32-bit result. `what` is a sentence for developers and never holds a secret.
class MOXCORE_API ResultException : public std::runtime_error {
public:
    /// `result` is negative; `message` is the text of `what`.
    ResultException(Result result, std::string const& message);
    ~ResultException() override;

    /// Negative.
    [[nodiscard]] Result GetResult() const noexcept { return result; }

private:
    Result result;
};

/// A broken contract, raised by ThrowError. `what` is the localized message.
class MOXCORE_API ContractViolation : public std::logic_error {
public:
    /// `message` is the text of `what`.
    explicit ContractViolation(std::string const& message);
    ~ContractViolation() override;
};

/// One value to stand in an error's message. Nothing that the library reports has any.
struct ReplacementValue {};

/// Raises ContractViolation with the text that `message` ("key=default") has in the locale in
/// force. The process goes on: who called decides what becomes of it. Does not return. The further
/// arguments place the error in a host's own log and are not used by this platform.
[[noreturn]] MOXCORE_API void ThrowError(int level, char const* message, long first, long second,
                                         bool silent, ReplacementValue, ReplacementValue,
                                         ReplacementValue, ReplacementValue);

/// The result that a failed future carries: that of a ResultException; 0 for null and for a
/// cancellation, which is no failure; kUnknownFailure for anything else. Any thread.
[[nodiscard]] MOXCORE_API Result ExtractResultFromException(std::exception_ptr const& exception);

/// The sentence that `exception` carries ("cancelled" for a cancellation), empty for null. Any
/// thread.
[[nodiscard]] MOXCORE_API std::string ExtractMessageFromException(
    std::exception_ptr const& exception);

}  // namespace moxcore::config
