#include "quillohostkit/widgets/LocationDialog.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTimer>
#include <memory>

#include "moxworkspace/workspace/WorkspaceUtils.h"

namespace quillohostkit {
namespace {

TEST(LocationDialog, LeavesNoParentForDialogsBehindHoweverItEnds) {
    using moxworkspace::workspace::WorkspaceUtils;
    QWidget window;
    window.show();
    bool hadParent = false;
    QTimer::singleShot(0, [&] {
        hadParent = WorkspaceUtils::GetModalDialogParentNode() != nullptr;
        QApplication::activeModalWidget()->close();
    });
    EXPECT_FALSE(AskForLocation(std::make_shared<quillomoxui::QuilloUser>(), window));
    EXPECT_TRUE(hadParent);
    EXPECT_EQ(WorkspaceUtils::GetModalDialogParentNode(), nullptr);

    EXPECT_ANY_THROW(static_cast<void>(AskForLocation(nullptr, window)));
    EXPECT_EQ(WorkspaceUtils::GetModalDialogParentNode(), nullptr);
}

}  // namespace
}  // namespace quillohostkit
