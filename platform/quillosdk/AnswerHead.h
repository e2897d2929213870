#pragma once

#include <string>
#include <string_view>

#include "quillosdk/QuilloResponse.h"

namespace quillosdk {

/// `text` with its ASCII letters in upper case.
[[nodiscard]] std::string UpperCase(std::string_view text);

/// Reads the head of an answer line by line, as libcurl hands it on. One thread.
class AnswerHead {
public:
    /// Takes a line, its end included. A status line begins anew: interim answers come before the
    /// final one. What comes after the head, the trailers of a body, is passed over.
    void ReadLine(std::string_view line);

    /// Whether the line has come that ends the head.
    [[nodiscard]] bool IsComplete() const { return isComplete; }

    /// Of a name that came several times the values stand one behind the other, with commas.
    [[nodiscard]] Headers& Fields() { return fields; }

private:
    Headers fields;
    bool isComplete = false;
};

}  // namespace quillosdk
