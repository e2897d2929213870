#include "service/http/Address.h"

#include <gtest/gtest.h>

namespace quilloservice::http {
namespace {

TEST(Address, HasOneFormForEach) {
    for (auto const& [text, address] : {std::pair("192.0.2.1", "192.0.2.1"),
                                        {"::ffff:192.0.2.1", "192.0.2.1"},
                                        {"0:0::0:1", "::1"},
                                        {"2001:DB8::1", "2001:db8::1"}}) {
        EXPECT_EQ(ParseAddress(text), address) << text;
    }
    for (char const* text : {"", "proxy.example", "192.0.2", "192.0.2.1:80", "[::1]", " ::1"})
        EXPECT_EQ(ParseAddress(text), std::nullopt) << text;
}

}  // namespace
}  // namespace quilloservice::http
