#include <gmock/gmock.h>

#include <fstream>

#include "quilloauth/AuthManager.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/operations/ReviewLinks.h"
#include "quillomoxui/model/operations/UploadToFolder.h"
#include "tests/quillomoxui/SignedIn.h"
#include "tests/support/TraceLog.h"

namespace quillomoxui {
namespace {

using model::QuilloCppSdkIntegration;
using moxcore::utility::Guid;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class FailureTraceTest : public ServiceTest {
protected:
    FailureTraceTest() {
        ServeTree();
        EXPECT_TRUE(SignIn());
        QuilloCppSdkIntegration::GetCurrentUser([this](auto const& received) { user = received; });
        executor.AdvanceBy(std::chrono::minutes(10));
        std::ofstream(movie) << "a movie";
    }

    std::shared_ptr<QuilloUser> user;
    std::string const movie = moxcore::string::UTF16to8(directory.Text()) + "/movie.mp4";
    Guid const id{testsupport::Id(3)};
};

TEST_F(FailureTraceTest, EveryFailedStepLeavesOneLineThatSaysWhatAndWhyWithoutTokens) {
    struct Step {
        std::string request;
        std::function<void()> take;
        char const* what;
    };
    auto const nothing = [](auto&&...) {};
    auto const path = moxcore::string::UTF8to16(movie);
    std::vector<Step> const steps = {
        {"GET /v1/me", [&] { QuilloCppSdkIntegration::GetCurrentUser(nothing); },
         "who is signed in"},
        {"GET /v1/accounts", [&] { user->FetchChildren(); }, "Could not read"},
        {"POST /v1/uploads", [&] { model::UploadToFolder(path, id, id, nothing, nothing); },
         "Could not upload"},
        {"POST /v1/projects/" + id.AsStdString() + "/review-links",
         [&] { model::CreateReviewLink(id, path, nothing); }, "review link"},
        {"POST /v1/review-links/" + id.AsStdString() + "/assets",
         [&] { model::AddAssetToLink(id, id, nothing); }, "review link"},
    };
    testsupport::TraceLog log(1);
    for (auto const& step : steps) {
        On(step.request, R"({"error":{"code":"no","message":"t0ken-of-the-test may not"}})", 403);
        step.take();
        executor.AdvanceBy(std::chrono::hours(1));
        EXPECT_THAT(log.Take(),
                    ElementsAre(AllOf(HasSubstr(step.what), HasSubstr("403"), HasSubstr("may not"),
                                      Not(HasSubstr("t0ken-of-the-test")), Not(HasSubstr("\n")))))
            << step.request;
    }

    QuilloCppSdkIntegration::SignOut();
    static_cast<void>(log.Take());
    EXPECT_FALSE(model::UploadToFolder(path, id, id, nothing, nothing));
    EXPECT_THAT(log.Take(),
                ElementsAre(AllOf(HasSubstr("Could not share"), HasSubstr("nobody is signed in"))));

    On("POST /oauth/token", R"({"error":"access_denied"})", 403);
    auto const before = transport.Count();
    QuilloCppSdkIntegration::SignIn(nothing);
    transport.WaitForCount(before + 1);
    // The sign-in's thread does one thing after the other: with this the sign-in has ended, too.
    quilloauth::jwt::GetAccessToken().Wait();
    EXPECT_THAT(log.Take(), ElementsAre(AllOf(HasSubstr("ign in"), HasSubstr("access_denied"))));
}

}  // namespace
}  // namespace quillomoxui
