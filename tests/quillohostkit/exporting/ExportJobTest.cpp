#include "quillohostkit/ExportJob.h"

#include <gmock/gmock.h>

#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "moxcore/filesupport/CommonDirs.h"
#include "quillohostkit/exporting/JobState.h"
#include "tests/support/DrainMainThread.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohostkit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::DrainMainThread;

/// A job whose reports and cancellations are noted.
class ExportJobTest : public testing::Test {
protected:
    ExportJobTest() { Begin(); }
    ~ExportJobTest() override { Drop(); }

    /// A job that is dropped ends, and says so later.
    void Drop() {
        job.reset();
        DrainMainThread();
        log.clear();
    }
    void Begin() {
        Drop();
        moxcore::filesupport::commondirs::SetUserRoot(directory.Text());
        state = std::make_shared<ExportJob::State>(
            Asset{}, directory.Path() / "movie.mp4",
            ExportJob::State::Hooks{.onProgress =
                                        [this](double fraction) {
                                            log.push_back(std::to_string(fraction).substr(0, 3));
                                        },
                                    .onEnd =
                                        [this](QString const& failure) {
                                            log.push_back("end " + failure.toStdString());
                                        }});
        job.emplace(state);
    }
    std::vector<std::string> Noted() {
        DrainMainThread();
        return std::exchange(log, {});
    }
    void NoteCancel() {
        job->OnCancelled([this] { log.emplace_back("cancelled"); });
    }

    testsupport::TemporaryDirectory directory;
    std::vector<std::string> log;
    std::shared_ptr<ExportJob::State> state;
    std::optional<ExportJob> job;
};

TEST_F(ExportJobTest, ReportsTheLastProgressWithinItsBounds) {
    for (double const fraction : {-1.0, 7.0, std::numeric_limits<double>::quiet_NaN()}) {
        job->SetProgress(fraction);
        EXPECT_THAT(Noted(), ElementsAre(fraction > 1 ? "1.0" : "0.0")) << fraction;
    }
    job->SetProgress(0.2);
    job->SetProgress(0.4);
    EXPECT_THAT(Noted(), ElementsAre("0.4"));
}

TEST_F(ExportJobTest, EndsOnce) {
    std::ofstream(job->OutputFile().toStdString()) << "a movie";
    job->Finish();
    job->Fail("Too late.");
    job->SetProgress(0.9);
    EXPECT_THAT(Noted(), ElementsAre("end "));
    NoteCancel();
    state->Cancel();
    EXPECT_THAT(Noted(), IsEmpty());
}

TEST_F(ExportJobTest, CallsTheHandlerOfItsCancellationWheneverThatCame) {
    for (bool const isEarly : {true, false}) {
        Begin();
        if (isEarly) NoteCancel();
        state->Cancel();
        if (!isEarly) NoteCancel();
        EXPECT_THAT(Noted(), ElementsAre("cancelled")) << isEarly;
        EXPECT_TRUE(job->IsCancelled());
        job->SetProgress(0.5);
        job->Fail("No codec.");
        EXPECT_THAT(Noted(), IsEmpty());
    }
}

}  // namespace
}  // namespace quillohostkit
