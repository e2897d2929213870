#pragma once

#include <string>

#include "service/base/Clock.h"
#include "service/oauth/AuthorizationRequest.h"

namespace quilloservice {

/// What shows that a sign-in form was made by this service, lately, for this very request and in
/// this very browser, so that no other page can have a browser send one. Nothing is kept: a token
/// is a keyed checksum, and the key lasts as long as this object. Any thread.
class FormTokens {
public:
    static constexpr std::int64_t kSeconds = 600;

    explicit FormTokens(Clock clock);

    /// `browser` is the secret that the browser keeps in its cookie.
    [[nodiscard]] std::string Make(std::string const& browser,
                                   AuthorizationRequest const& request) const;

    [[nodiscard]] bool IsGood(std::string const& token, std::string const& browser,
                              AuthorizationRequest const& request) const;

private:
    [[nodiscard]] std::string MakeAt(std::int64_t time, std::string const& browser,
                                     AuthorizationRequest const& request) const;

    Clock clock;
    std::string key;
};

}  // namespace quilloservice
