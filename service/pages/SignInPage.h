#pragma once

#include <string>
#include <vector>

#include "service/oauth/AuthorizationRequest.h"

namespace quilloservice {

/// The pages of the sign-in: HTML documents that have no scripts and load nothing.
namespace signinpage {

/// The contents of the form.
struct Form {
    AuthorizationRequest request;
    std::string token;               ///< see FormTokens
    std::vector<std::string> users;  ///< names to choose from
    std::string user;                ///< the initial user name
    bool wrong = false;              ///< the last attempt had a wrong name or password
};

/// The Content-Security-Policy of the form for `request`.
std::string FormPolicy(AuthorizationRequest const& request);

/// Renders the form on which the user allows or denies the request.
std::string RenderForm(Form const& form);

/// The Content-Security-Policy of a refusal.
std::string RefusalPolicy();

/// Renders the page shown instead of the form; `reason` is plain text.
std::string RenderRefusal(std::string const& reason);

}  // namespace signinpage

}  // namespace quilloservice
