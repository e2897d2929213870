#include "host/editor/EditorApplication.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/DrainMainThread.h"
#include "tests/support/FailureLog.h"

namespace quillohost::editor {
namespace {

class Thrower : public QObject {
public:
    bool event(QEvent*) override { throw std::runtime_error("of an event"); }
};

TEST(EditorApplication, GoesOnAfterWhatWidgetsAndSlotsThrow) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    for (bool const isWatched : {false, true}) {
        EditorApplication application(isWatched ? std::optional("/dev/null") : std::nullopt);
        testsupport::FailureLog failures;
        Thrower thrower;
        int others = 0;
        QCoreApplication::postEvent(&thrower, new QEvent(QEvent::User));
        QMetaObject::invokeMethod(
            qApp, [] { throw std::runtime_error("of a slot"); }, Qt::QueuedConnection);
        QMetaObject::invokeMethod(
            qApp, [&] { ++others; }, Qt::QueuedConnection);
        QCoreApplication::processEvents();
        testsupport::DrainMainThread();
        EXPECT_EQ(others, 1);
        auto const told = failures.All();
        ASSERT_EQ(told.size(), 2u);
        for (auto const& failure : told)
            EXPECT_EQ(failure.step, quillocommon::Step::HandleEvent);
        EXPECT_NE(told[0].message.find("of an event"), std::string::npos) << told[0].message;
        EXPECT_NE(told[1].message.find("of a slot"), std::string::npos) << told[1].message;
    }
}

}  // namespace
}  // namespace quillohost::editor
