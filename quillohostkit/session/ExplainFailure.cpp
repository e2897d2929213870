#include "quillohostkit/session/ExplainFailure.h"

#include "quilloauth/SignInResults.h"
#include "quillocommon/ServiceAddress.h"

namespace quillohostkit {

std::string ExplainFailure(quillocommon::Failure const& failure) {
    using quillocommon::Step;
    if (quillocommon::IsWarning(failure.step)) return "Warning: " + failure.message;
    bool const isSignIn = failure.step == Step::SignIn || failure.step == Step::ReadUser;
    bool const answered =
        failure.httpStatus != 0 || failure.result == quilloauth::jwt::kNotSignedIn;
    if (!isSignIn || answered) return failure.message;
    return failure.message + " The service is expected at " + quillocommon::GetServiceAddress() +
           "; is it running?";
}

}  // namespace quillohostkit
