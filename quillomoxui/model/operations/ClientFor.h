#pragma once

#include <memory>

#include "moxcore/config/Error.h"
#include "quillocommon/Failures.h"
#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"

namespace quillomoxui::model {

/// The shared client for a step of a share. Without one the step has failed, and those who listen
/// for failures are told so.
[[nodiscard]] inline std::shared_ptr<quillosdk::QuilloClient> ClientFor(quillocommon::Step step) {
    auto client = QuilloCppSdkIntegration::GetQuilloClient();
    if (!client)
        quillocommon::ReportFailure(
            {step, moxcore::config::kUnknownFailure, 0,
             "Could not share: nobody is signed in; sign in and share again."});
    return client;
}

}  // namespace quillomoxui::model
