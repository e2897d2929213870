#include "quillohostkit/session/TellWaits.h"

#include <optional>
#include <utility>

#include "moxcore/string/Conversions.h"
#include "moxcore/string/TimeText.h"

namespace quillohostkit {
namespace {

std::string NotAvailableSince(moxcore::threads::TimePoint since) {
    return "The service has not been available since " +
           moxcore::string::UTF16to8(moxcore::string::FormatTimeOfDay(since));
}

}  // namespace

std::vector<std::shared_ptr<quillomoxui::BindingHandle>> TellWaits(
    quillomoxui::ShareForReviewViewModel& viewModel,
    std::function<void(std::string const&)> const& tell) {
    auto const onSignIn = [tell](quilloauth::SignInProgress const& progress) {
        if (progress.stage == quilloauth::SignInStage::InBrowser)
            tell("Waiting for you to sign in in the browser");
        if (progress.stage == quilloauth::SignInStage::Waiting)
            tell(NotAvailableSince(progress.since) + "; the sign-in is tried again.");
    };
    auto const onUpload =
        [tell, isWaiting = false](std::optional<moxcore::threads::TimePoint> const& since) mutable {
            if (since)
                tell(NotAvailableSince(*since) + "; the upload goes on by itself.");
            else if (isWaiting)
                tell("The service is available again; the upload goes on.");
            isWaiting = since.has_value();
        };
    return {viewModel.SignInProgressNotifyingPropertyHost::BindValueChanged(onSignIn),
            viewModel.UploadWaitingSinceNotifyingPropertyHost::BindValueChanged(onUpload)};
}

}  // namespace quillohostkit
