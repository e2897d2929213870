#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>

#include "moxcore/string/Conversions.h"
#include "moxui/controls/UI_StaticText.h"
#include "quillomoxui/view/Factory.h"
#include "quillomoxui/view/PopupBaseView.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"
#include "tests/support/ManualExecutor.h"
#include "tests/support/TestWindow.h"
#include "tests/support/Views.h"

namespace quillomoxui::view {

/// Counts what the views ask of it, and lets it happen where no service is needed for it.
class CountingModel : public ShareForReviewViewModel {
public:
    void Login() override {
        ++logins;
        SetSignInProgress({quilloauth::SignInStage::Asking, {}});
    }
    void Logout() override { ++logouts; }
    int logins = 0;
    int logouts = 0;
};

class ShareViewsFixture : public testing::Test {
protected:
    ShareViewsFixture() {
        model->SetActiveAssetName(moxcore::string::AsciiToUTF16("Opening titles"));
    }

    /// The view of `id`, in a window, after it has received the properties' values.
    PopupBaseView& Show(ShareForReviewViewID id) {
        model->SetCurrentViewID(id);
        view = factory::CreateView(id, model);
        auto const size = view->UI_GetRecommendedSize(nullptr);
        window.Add(view, {0, 0, size.x, size.y});
        return *view;
    }

    /// What stands in the text control after `caption`, in the order of the children.
    bool Shows(std::string const& text) {
        return testsupport::FindText<moxui::controls::UI_StaticText>(*view, text) != nullptr;
    }

    /// The visible toasts, by their accessible names.
    static std::vector<std::string> Toasts() {
        std::vector<std::string> texts;
        for (auto const* const widget : QApplication::topLevelWidgets())
            if (widget->isVisible() && widget->windowType() == Qt::ToolTip)
                texts.push_back(widget->accessibleName().toStdString());
        return texts;
    }

    void Click(moxui::ui::UI_Node const& node) {
        QTest::mouseClick(&testsupport::WidgetOf(node), Qt::LeftButton);
        testsupport::RunEvents();
    }

    testsupport::ManualExecutor executor;
    std::shared_ptr<CountingModel> model = std::make_shared<CountingModel>();
    testsupport::TestWindow window;
    boost::intrusive_ptr<PopupBaseView> view;
};

}  // namespace quillomoxui::view
