// Taking a secret out of a text. The first line is the secret; in the rest "$" stands for it, "@"
// for it as a form sends it, and "#" for that once more encoded.

#include <string>

#include "quillocommon/Url.h"
#include "quillosdk/Redact.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using quillocommon::PercentEncode;
    auto input = fuzz::AsText(data, size);
    std::string const secret(fuzz::TakeLine(input));
    if (!quillosdk::IsToken(secret)) return 0;
    auto const once = PercentEncode(secret);
    auto const twice = PercentEncode(once);

    std::string text;
    for (char const c : input)
        text += c == '$' ? secret : c == '@' ? once : c == '#' ? twice : std::string(1, c);
    auto const before = text.size();
    quillosdk::Redact(text, secret);
    FUZZ_REQUIRE(text.size() <= before);
    // What replaces it may look like it; and what looks encoded itself may merge with what follows.
    if (secret.find("...") != std::string::npos || secret.find_first_of("%\\") != std::string::npos)
        return 0;
    for (auto const& form : {secret, once, twice})
        FUZZ_REQUIRE(text.find(form) == std::string::npos);
    return 0;
}
