// The head of a request to the port at which a sign-in comes back.

#include <algorithm>
#include <string>

#include "quilloauth/LoopbackRequest.h"
#include "quillocommon/Url.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const head = fuzz::AsText(data, size);
    auto const query = quilloauth::ReadLoopbackQuery(head, "/callback");
    if (query) {
        std::string const target = query->empty() ? "/callback" : "/callback?" + *query;
        FUZZ_REQUIRE(head.starts_with("GET " + target + " HTTP/1.") ||
                     (query->empty() && head.starts_with("GET /callback? HTTP/1.")));
        for (unsigned char const c : *query)
            FUZZ_REQUIRE(c > ' ' && c < 0x7F);
    }
    auto const all = quillocommon::ParseQuery(query ? *query : std::string(head));
    auto const text = query ? std::string_view(*query) : head;
    FUZZ_REQUIRE(all.size() <=
                 static_cast<std::size_t>(std::count(text.begin(), text.end(), '&')) + 1);
    return 0;
}
