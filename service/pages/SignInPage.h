#pragma once

#include <string>
#include <vector>

#include "service/oauth/AuthorizationRequest.h"

namespace quilloservice {

/// The pages of the sign-in in the browser: complete HTML documents without scripts, that load
/// nothing.
namespace signinpage {

/// What the form shows and sends.
struct Form {
    AuthorizationRequest request;
    std::string token;               ///< see FormTokens
    std::vector<std::string> users;  ///< the names of those who may sign in
    std::string user;                ///< the name that stands in the form
    bool wrong = false;              ///< the last attempt's name or password was
};

/// The value of the Content-Security-Policy header that the form is to be served with; `request` is
/// what it asks the user about.
std::string FormPolicy(AuthorizationRequest const& request);

/// The page on which the user allows or denies what the program asks.
std::string RenderForm(Form const& form);

/// The value of the Content-Security-Policy header that a refusal is to be served with.
std::string RefusalPolicy();

/// The page that says why there is no form: `reason`, text.
std::string RenderRefusal(std::string const& reason);

}  // namespace signinpage

}  // namespace quilloservice
