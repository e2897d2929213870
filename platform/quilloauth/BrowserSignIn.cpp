#include "quilloauth/BrowserSignIn.h"

#include <chrono>
#include <exception>
#include <utility>
#include <vector>

#include "moxcore/async/Future.h"
#include "moxcore/config/Error.h"
#include "moxcore/threads/AsyncExecutor.h"
#include "quilloauth/AuthManager.h"
#include "quilloauth/Browser.h"
#include "quilloauth/Secrets.h"
#include "quillocommon/Url.h"
#include "quillosdk/FailureText.h"
#include "quillosdk/Redact.h"

namespace quilloauth {
namespace {

using moxcore::config::ResultException;

constexpr std::chrono::milliseconds kPatience = std::chrono::minutes(10);

/// What the browser comes back with when the user refuses (RFC 6749).
constexpr char kDenied[] = "access_denied";

using Parameters = std::vector<std::pair<std::string, std::string>>;

/// The value of a parameter that is there once; empty otherwise.
std::string ValueOf(Parameters const& parameters, std::string const& name) {
    std::string value;
    bool found = false;
    for (auto const& [itsName, itsValue] : parameters) {
        if (itsName != name) continue;
        if (std::exchange(found, true)) return {};
        value = itsValue;
    }
    return value;
}

std::string PathOf(std::string const& redirectURI) {
    auto const url = quillocommon::ParseUrl(redirectURI);
    if (!url || url->host != "127.0.0.1" || !url->origin.starts_with("http:") || url->hasUser ||
        url->hasQuery || url->hasFragment)
        throw ResultException(jwt::kNotSignedIn,
                              "the application's redirect URI is none of the form "
                              "http://127.0.0.1/..., to which a browser could come back");
    return url->target;
}

std::string DescribeError(Parameters const& parameters, std::string const& error,
                          std::string const& state) {
    if (error == kDenied) return "the access was denied in the browser; sign in again and allow it";
    auto description = ValueOf(parameters, "error_description");
    if (description.empty()) description = error;
    quillosdk::Redact(description, state);
    return "the service answered in the browser: " + quillosdk::Sanitise(description);
}

}  // namespace

NotAllowed::NotAllowed(SignInStage stage, std::string const& why)
    : ResultException(jwt::kNotSignedIn, why), stage(stage) {}

BrowserSignIn::BrowserSignIn(std::string clientID, std::string address,
                             std::string const& redirectURI)
    : clientID(std::move(clientID)),
      address(std::move(address)),
      state(CreateSecret()),
      verifier(CreateSecret()),
      listener(PathOf(redirectURI)) {}

AuthorizationCode BrowserSignIn::Run() {
    moxcore::threads::GetIOBoundExecutor()->CallAsyncDelayed(
        [weak = weak_from_this()] {
            if (auto const self = weak.lock())
                self->End(Failed{SignInStage::Expired,
                                 "nobody has signed in in the browser for ten minutes; try again"});
        },
        static_cast<std::uint32_t>(kPatience.count()));
    if (!HasEnded()) Open();
    listener.Serve([this](std::string const& query) { return OnReturn(query); });

    std::lock_guard lock(mutex);
    if (auto const* failed = std::get_if<Failed>(&*outcome))
        throw NotAllowed(failed->stage, failed->why);
    if (auto const* allowed = std::get_if<Allowed>(&*outcome))
        return {allowed->code, listener.Address(), verifier};
    throw moxcore::async::CancelledException();
}

void BrowserSignIn::Cancel() {
    End(Cancelled{});
}

void BrowserSignIn::OpenAgain() {
    if (!HasEnded()) Open();
}

void BrowserSignIn::End(Outcome newOutcome) {
    std::lock_guard lock(mutex);
    if (outcome) return;
    outcome = std::move(newOutcome);
    listener.Stop();
}

bool BrowserSignIn::HasEnded() {
    std::lock_guard lock(mutex);
    return outcome.has_value();
}

void BrowserSignIn::Open() {
    auto const onFailure = [weak = weak_from_this()](std::string const& why) {
        if (auto const self = weak.lock())
            self->End(Failed{SignInStage::NoBrowser,
                             "the browser cannot be opened: " + why +
                                 "; see that there is one, and which is the system's own"});
    };
    try {
        OpenBrowser(PageAddress(), onFailure);
    } catch (...) {
        onFailure(moxcore::config::ExtractMessageFromException(std::current_exception()));
    }
}

std::string BrowserSignIn::PageAddress() const {
    using quillocommon::PercentEncode;
    return address + "/oauth/authorize?response_type=code&client_id=" + PercentEncode(clientID) +
           "&redirect_uri=" + PercentEncode(listener.Address()) + "&state=" + state +
           "&code_challenge=" + ChallengeOf(verifier) + "&code_challenge_method=S256";
}

ReturnPage BrowserSignIn::OnReturn(std::string const& query) {
    auto const parameters = quillocommon::ParseQuery(query);
    auto const code = ValueOf(parameters, "code");
    auto const error = ValueOf(parameters, "error");
    if (!IsSameSecret(ValueOf(parameters, "state"), state) || code.empty() == error.empty())
        return {400, "Not the sign-in that is under way",
                "Nothing has changed. Close this window and go on in the one that the program has "
                "opened."};
    if (code.empty()) {
        auto const stage = error == kDenied ? SignInStage::Denied : SignInStage::Refused;
        End(Failed{stage, DescribeError(parameters, error, state)});
        return {200, "Not signed in",
                "The program has not been allowed to sign you in. You can close this window."};
    }
    End(Allowed{code});
    return {200, "Thank you", "You can close this window and go back to the program."};
}

}  // namespace quilloauth
