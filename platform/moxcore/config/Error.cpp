#include "moxcore/config/Error.h"

#include "moxcore/async/CancelledException.h"
#include "moxcore/config/Localizer.h"
#include "moxcore/string/Conversions.h"

namespace moxcore::config {

ResultException::ResultException(Result result, std::string const& message)
    : std::runtime_error(message), result(result) {}

ResultException::~ResultException() = default;

ContractViolation::ContractViolation(std::string const& message) : std::logic_error(message) {}

ContractViolation::~ContractViolation() = default;

void ThrowError(int, char const* message, long, long, bool, ReplacementValue, ReplacementValue,
                ReplacementValue, ReplacementValue) {
    throw ContractViolation(string::UTF16to8(Localizer::Localize(message)));
}

Result ExtractResultFromException(std::exception_ptr const& exception) {
    if (!exception) return 0;
    try {
        std::rethrow_exception(exception);
    } catch (ResultException const& failure) {
        return failure.GetResult();
    } catch (async::CancelledException const&) {
        return 0;
    } catch (...) {
        return kUnknownFailure;
    }
}

std::string ExtractMessageFromException(std::exception_ptr const& exception) {
    if (!exception) return {};
    try {
        std::rethrow_exception(exception);
    } catch (std::exception const& failure) {
        return failure.what();
    } catch (...) {
        return "unknown failure";
    }
}

}  // namespace moxcore::config
