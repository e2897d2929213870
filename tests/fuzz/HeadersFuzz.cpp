// The head of an answer, line by line, and the numbers in it.

#include <algorithm>
#include <map>
#include <stdexcept>
#include <string>

#include "quillomoxui/model/sdk/RateLimit.h"
#include "quillosdk/AnswerHead.h"
#include "quillosdk/RetryPolicy.h"
#include "tests/fuzz/Fuzz.h"

namespace {

std::string_view Trim(std::string_view text) {
    text = text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
    return text.substr(std::min(text.find_first_not_of(" \t"), text.size()));
}

void TryRateLimit(quillosdk::Headers const& headers) {
    try {
        auto const limit = quillomoxui::model::ReadRateLimit(headers);
        if (!limit) return;
        FUZZ_REQUIRE(limit->limit > 0 && limit->window >= std::chrono::seconds(1));
        auto const& text = headers.find("X-RATELIMIT-LIMIT")->second;
        FUZZ_REQUIRE(Trim(text)[0] != '-');
        // Beyond an int's end it is that end.
        if (text.find_first_not_of("0123456789") == text.npos && text.size() > 10 && text[0] != '0')
            FUZZ_REQUIRE(limit->limit == INT32_MAX);
    } catch (std::invalid_argument const&) {
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto input = fuzz::AsText(data, size);
    quillosdk::AnswerHead head;
    std::map<std::string, std::string> expected;
    while (!input.empty()) {
        auto const line = fuzz::TakeLine(input);
        bool const ended = head.IsComplete();
        head.ReadLine(std::string(line) + "\r\n");

        auto const colon = line.find(':');
        if (line.starts_with("HTTP/")) {
            expected.clear();
            FUZZ_REQUIRE(!head.IsComplete());
        } else if (Trim(line).empty()) {
            FUZZ_REQUIRE(head.IsComplete());
        } else if (!ended && colon != std::string_view::npos) {
            auto const name = quillosdk::UpperCase(line.substr(0, colon));
            FUZZ_REQUIRE(name.find_first_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos);
            auto const value = std::string(Trim(line.substr(colon + 1)));
            auto const [place, isNew] = expected.try_emplace(name, value);
            if (!isNew) place->second += ", " + value;
        }
    }
    auto const& fields = head.Fields();
    FUZZ_REQUIRE(std::equal(fields.begin(), fields.end(), expected.begin(), expected.end()));
    TryRateLimit(fields);
    if (auto const found = fields.find("RETRY-AFTER"); found != fields.end())
        static_cast<void>(quillosdk::RetryPolicy::ParseRetryAfter(found->second, {}));
    return 0;
}
