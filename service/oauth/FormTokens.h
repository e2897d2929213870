#pragma once

#include <string>
#include <string_view>

#include "service/base/Clock.h"
#include "service/base/Id.h"
#include "service/oauth/AuthorizationRequest.h"

namespace quilloservice {

/// The secret in the cookie of a browser that opened the sign-in page: 64 hex digits.
struct BrowserTag {
    static constexpr std::size_t kDigits = 64;
    static bool IsValid(std::string_view text) {
        return text.size() == kDigits &&
               text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
    }
};

using BrowserId = Id<BrowserTag>;

/// Tokens against forged sign-in forms (CSRF). A token proves that this service made the form for
/// this request and this browser in the last ten minutes. It is a keyed checksum, so nothing is
/// stored; the key lives as long as this object. Any thread.
class FormTokens {
public:
    static constexpr std::int64_t kSeconds = 600;

    explicit FormTokens(Clock clock);

    [[nodiscard]] std::string Make(BrowserId const& browser,
                                   AuthorizationRequest const& request) const;

    [[nodiscard]] bool IsGood(std::string const& token, BrowserId const& browser,
                              AuthorizationRequest const& request) const;

private:
    [[nodiscard]] std::string MakeAt(std::int64_t time, BrowserId const& browser,
                                     AuthorizationRequest const& request) const;

    Clock clock;
    std::string key;
};

}  // namespace quilloservice
