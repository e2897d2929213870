#include "quillosdk/FailureText.h"

#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "quillosdk/AnswerReader.h"

namespace quillosdk {
namespace {

constexpr std::size_t kLongestText = 200;

char const* AdviceFor(int status) {
    switch (status) {
        case 401:
            return "; sign in again";
        case 403:
            return "; ask the account's owner for access";
        case 404:
        case 410:
            return "; it may have been removed, so choose again";
        case 413:
            return "; it is larger than the service takes";
        case 429:
            return "; wait a while and try again";
        default:
            return status >= 500 || status == 408 ? "; try again later" : "";
    }
}

char const* AdviceForResult(moxcore::config::Result result) {
    switch (result) {
        case kNoConnection:
        case kConnectionLost:
            return "; check the network connection and try again";
        case kAnswerTooLarge:
        case kMalformedAnswer:
            return "; the service may be of another version";
        case kBadRequest:
            return "; check the service's address";
        default:
            return "";
    }
}

std::string Beginning(Task const& task) {
    return std::string("Could not ").append(task.description).append(": ");
}

}  // namespace

std::string DescribeRefusal(Task const& task, HttpResponse& answer) {
    std::string text = Beginning(task) + "the service answered " + std::to_string(answer.status);
    auto const error = ReadServiceError(answer.body);
    auto const words = Sanitise(error.message.empty() ? error.code : error.message);
    if (!words.empty()) text += " (" + words + ")";
    return text + AdviceFor(answer.status) + ".";
}

std::string DescribeException(Task const& task, std::exception_ptr const& exception) {
    return Beginning(task) + moxcore::config::ExtractMessageFromException(exception) +
           AdviceForResult(moxcore::config::ExtractResultFromException(exception)) + ".";
}

std::string ReportRefusal(Task const& task, HttpResponse& answer) {
    auto const text = DescribeRefusal(task, answer);
    quillocommon::ReportFailure({task.step, kRefused, answer.status, text});
    return text;
}

std::exception_ptr ReportException(Task const& task, std::exception_ptr const& exception,
                                   int httpStatus) {
    auto const result = moxcore::config::ExtractResultFromException(exception);
    if (result >= 0) return exception;
    auto const text = DescribeException(task, exception);
    quillocommon::ReportFailure({task.step, result, httpStatus, text});
    // One that is not ours keeps its type.
    if (result == moxcore::config::kUnknownFailure) return exception;
    return std::make_exception_ptr(moxcore::config::ResultException(result, text));
}

std::string Sanitise(std::string const& text) {
    auto units = moxcore::string::UTF8to16(text);
    if (units.size() > kLongestText) {
        bool const splitsPair = (units[kLongestText - 1] & 0xFC00) == 0xD800;
        units.resize(splitsPair ? kLongestText - 1 : kLongestText);
    }
    for (auto& unit : units) {
        bool const isControl = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
        if (isControl || unit == 0x2028 || unit == 0x2029) unit = ' ';
    }
    return moxcore::string::UTF16to8(units);
}

}  // namespace quillosdk
