#include "service/oauth/FormTokens.h"

#include "service/base/Digest.h"
#include "service/base/Text.h"

namespace quilloservice {

FormTokens::FormTokens(Clock clock) : clock(std::move(clock)), key(RandomBytes(32)) {}

std::string FormTokens::Make(BrowserId const& browser, AuthorizationRequest const& request) const {
    return MakeAt(clock(), browser, request);
}

bool FormTokens::IsGood(std::string const& token, BrowserId const& browser,
                        AuthorizationRequest const& request) const {
    auto time = ParseNumber(std::string_view(token).substr(0, token.find('.')));
    return time && *time <= clock() && clock() - *time < kSeconds &&
           IsSameSecret(token, MakeAt(*time, browser, request));
}

std::string FormTokens::MakeAt(std::int64_t time, BrowserId const& browser,
                               AuthorizationRequest const& request) const {
    std::string text = std::to_string(time);
    std::string token = text + '.';
    for (std::string const& part : {browser.GetText(), request.client.GetText(),
                                    request.redirectUri, request.state, request.challenge}) {
        text += '/' + std::to_string(part.size()) + ':' + part;
    }
    return token + ToHex(HmacSha256(key, text));
}

}  // namespace quilloservice
