#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "quillocommon/Failures.h"
#include "quillosdk/Transport.h"

namespace quillosdk {

// How a failed step is put into words and reported. A message says what failed, why, and
// what to do about it. Any thread.

/// The operation, for messages and for the failure listeners.
struct Task {
    quillocommon::Step step;
    std::string_view
        description;             ///< completes "Could not ...": "read the projects of a workspace".
                                 ///< Of a text that lasts as long as any copy of this.
    bool pacedByCaller = false;  ///< too many requests are no failure: the caller tries again
};

/// The service has refused: its status, and its own words where it sent any.
[[nodiscard]] std::string DescribeRefusal(Task const& task, HttpResponse& answer);

/// There was no answer, or none that could be read.
[[nodiscard]] std::string DescribeException(Task const& task, std::exception_ptr const& exception);

/// Reports that the service has refused `task`; returns the sentence reported.
std::string ReportRefusal(Task const& task, HttpResponse& answer);

/// Reports what `task` failed with; a cancellation is no failure and not reported. `httpStatus` is
/// that of the service's last answer. Returns the same failure with the sentence reported; a
/// cancellation, and what carries no result of its own, as they are.
std::exception_ptr ReportException(Task const& task, std::exception_ptr const& exception,
                                   int httpStatus = 0);

/// `text`, which came from elsewhere, fit to stand in a message: valid UTF-8, on one line, at most
/// 200 characters.
[[nodiscard]] std::string Sanitise(std::string const& text);

}  // namespace quillosdk
