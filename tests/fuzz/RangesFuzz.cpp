// The header Range. The first line is the size of the file; the rest is the header.

#include <charconv>
#include <string>

#include "service/http/ByteRange.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using quilloservice::ParseRange;
    auto input = fuzz::AsText(data, size);
    auto const line = fuzz::TakeLine(input);
    std::int64_t fileSize = 0;
    std::from_chars(line.data(), line.data() + line.size(), fileSize);
    if (fileSize < 0) return 0;

    auto const request = ParseRange(input, fileSize);
    if (!request.part) return 0;
    auto const& part = *request.part;
    FUZZ_REQUIRE(!request.unsatisfiable);
    FUZZ_REQUIRE(part.first >= 0 && part.length > 0 && part.length <= fileSize - part.first);
    auto const last = std::to_string(part.first + part.length - 1);
    auto const again = ParseRange("bytes=" + std::to_string(part.first) + "-" + last, fileSize);
    FUZZ_REQUIRE(again.part && again.part->first == part.first &&
                 again.part->length == part.length);
    auto const suffix = ParseRange("bytes=-" + std::to_string(fileSize - part.first), fileSize);
    FUZZ_REQUIRE(suffix.part && suffix.part->first == part.first);
    return 0;
}
