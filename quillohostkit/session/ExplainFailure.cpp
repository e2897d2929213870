#include "quillohostkit/session/ExplainFailure.h"

#include "moxcore/config/Localizer.h"
#include "quilloauth/SignInResults.h"
#include "quillocommon/ServiceAddress.h"

namespace quillohostkit {

using moxcore::config::Text;

std::string ExplainFailure(quillocommon::Failure const& failure) {
    using quillocommon::Step;
    if (quillocommon::IsWarning(failure.step))
        return Text("$$$/Vistrel/quillohostkit/Failure/Warning=Warning: {text}",
                    {{"text", failure.message}});
    bool const isSignIn = failure.step == Step::SignIn || failure.step == Step::ReadUser;
    bool const answered =
        failure.httpStatus != 0 || failure.result == quilloauth::jwt::kNotSignedIn;
    if (!isSignIn || answered) return failure.message;
    return Text(
        "$$$/Vistrel/quillohostkit/Failure/Expected={text} The service is expected at {address}; "
        "is it running?",
        {{"text", failure.message}, {"address", quillocommon::GetServiceAddress()}});
}

}  // namespace quillohostkit
