#include "quillosdk/Redact.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Redact, TakesASecretOutInWhateverFormItIsRepeated) {
    struct Row {
        char const* secret;
        std::string text;
        char const* redacted;
    };
    Row const rows[] = {
        {"abcdefghij/klm-n", "no abcdefghij/klm-n, abcdefghij/klm-nabcdefghij/klm-n",
         "no ..., ......"},
        {"abcdefghij/klm-n", "abcdefghij%2Fklm%2dn abcdefghij%252Fklm-n", "... ..."},
        {"abcdefghij/klm-n", R"(abcdefghij\/klm-n \u0061bcdefghij\u002Fklm-n)", "... ..."},
        {"abcdefghij/klm-n", R"({\"t\":\"abcdefghij\\\/klm-n\"})", R"({\"t\":\"...\"})"},
        {"abcdefghij/klm-n", "abcdefghi is cut off, hij/klm-n too", "... is cut off, ... too"},
        {"abcdefghij/klm-n", "abcdefg is too little", "abcdefg is too little"},
        {"a code of blanks", "a+code+of+blanks", "..."},
        {"short", "a short one", "a ... one"},
        {"a%2Fb%5Cc%22d%25e", "a%2Fb%5Cc%22d%25e, a%252Fb%255Cc%2522d%2525e", "..., ..."},
        {"...", "more... and more...", "more... and more..."},
        {"................", std::string(40, '.'), "........."},
        {"", "nothing", "nothing"},
        {"abcdefghij/klm-n", R"(100% \)", R"(100% \)"},
        {"abcdefghij/klm-n", "%2", "%2"},
    };
    for (auto const& row : rows) {
        auto text = row.text;
        quillosdk::Redact(text, row.secret);
        EXPECT_EQ(text, row.redacted) << row.text;
    }
}

}  // namespace
