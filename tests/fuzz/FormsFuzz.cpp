// The fields of a query and of a form, and percent-encodings.

#include <algorithm>
#include <string>

#include "service/base/Text.h"
#include "service/http/UrlEncoding.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using quilloservice::PercentEncode;
    using namespace quilloservice::http;
    auto const text = fuzz::AsText(data, size);

    auto const fields = ParseForm(text);
    FUZZ_REQUIRE(fields.size() <=
                 static_cast<std::size_t>(std::count(text.begin(), text.end(), '&')) + 1);
    std::string written;
    for (auto const& [name, value] : fields)
        written += '&' + PercentEncode(name) + '=' + PercentEncode(value);
    FUZZ_REQUIRE(ParseForm(written) == fields);

    Fields const any{{std::string(text), "1"}, {"2", std::string(text)}, {"", ""}};
    FUZZ_REQUIRE(ParseForm(PercentEncode(text) + "=1&2=" + PercentEncode(text) + "&=") == any);

    FUZZ_REQUIRE(PercentDecode(PercentEncode(text)) == text);
    if (auto const decoded = PercentDecode(text)) {
        auto const signs = static_cast<std::size_t>(std::count(text.begin(), text.end(), '%'));
        FUZZ_REQUIRE(decoded->size() + 2 * signs == size);
    }
    return 0;
}
