#include "quillohostkit/session/TellWaits.h"

#include <optional>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/string/TimeText.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

std::string TextWithTime(char const* keyAndDefault, moxcore::threads::TimePoint time) {
    return Text(keyAndDefault,
                {{"time", moxcore::string::UTF16to8(moxcore::string::FormatTimeOfDay(time))}});
}

}  // namespace

std::vector<std::shared_ptr<quillomoxui::BindingHandle>> TellWaits(
    quillomoxui::ShareForReviewViewModel& viewModel,
    std::function<void(std::string const&)> const& tell) {
    auto const onSignIn = [tell](quilloauth::SignInProgress const& progress) {
        if (progress.stage == quilloauth::SignInStage::InBrowser)
            tell(
                Text("$$$/Vistrel/quillohostkit/SignIn/InBrowser=Waiting for you to sign in in the "
                     "browser"));
        if (progress.stage == quilloauth::SignInStage::Waiting)
            tell(
                TextWithTime("$$$/Vistrel/quillohostkit/SignIn/WaitingSince=The service has not "
                             "been available since {time}; the sign-in is tried again.",
                             progress.since));
    };
    auto const onUpload =
        [tell, isWaiting = false](std::optional<moxcore::threads::TimePoint> const& since) mutable {
            if (since)
                tell(
                    TextWithTime("$$$/Vistrel/quillohostkit/Upload/WaitingSince=The service has "
                                 "not been available since {time}; the upload goes on by itself.",
                                 *since));
            else if (isWaiting)
                tell(
                    Text("$$$/Vistrel/quillohostkit/Upload/GoesOn=The service is available again; "
                         "the upload goes on."));
            isWaiting = since.has_value();
        };
    return {viewModel.SignInProgressNotifyingPropertyHost::BindValueChanged(onSignIn),
            viewModel.UploadWaitingSinceNotifyingPropertyHost::BindValueChanged(onUpload)};
}

}  // namespace quillohostkit
