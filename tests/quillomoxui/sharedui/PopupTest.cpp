#include <gmock/gmock.h>

#include <QApplication>
#include <QComboBox>
#include <QTest>
#include <stdexcept>

#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/threads/MainThread.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/controls/UI_PictureSupplyMessage.h"
#include "moxui/controls/UI_TouchPopupContainer.h"
#include "moxui/skins/ThemeProvider.h"
#include "quillomoxui/sharedui/BindImageSupplyFunction.h"
#include "quillomoxui/sharedui/PopupMainView.h"
#include "quillomoxui/sharedui/PopupManager.h"
#include "quillomoxui/sharedui/RecommendedSize.h"
#include "quillomoxui/sharedui/ShareForReviewScreenManager.h"
#include "quillomoxui/sharedui/SizedStaticImage.h"
#include "quillomoxui/utility/GetResourceManager.h"
#include "quillomoxui/view/PopupBaseView.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"
#include "tests/support/TestWindow.h"
#include "tests/support/Views.h"

namespace quillomoxui {
namespace {

using moxui::ui::UI_SubView;
using testing::ElementsAre;
using testsupport::RunEvents;
using testsupport::WidgetOf;
using ID = ShareForReviewViewID;

/// A view that would like a size.
class Sized : public UI_SubView {
public:
    Sized(float width, float height) : size{width, height} {}
    moxcore::geom::PointT<float> UI_GetRecommendedSize(moxui::drawbot::Drawbot*) const override {
        return size;
    }
    moxcore::geom::PointT<float> size;
};

std::vector<bool> Visibility(PopupMainView const& mainView) {
    std::vector<bool> visible;
    for (auto child = mainView.ChildBegin(); child != mainView.ChildEnd(); ++child)
        visible.push_back(static_cast<UI_SubView&>(**child).UI_IsViewVisible());
    return visible;
}

TEST(PopupSections, AreInsertedInPlaceAndMaximizedOneAtATime) {
    PopupMainView* const raw = new PopupMainView;
    boost::intrusive_ptr<PopupMainView> const mainView(raw);
    auto const first = InsertSection(*mainView, 0, new Sized(100, 10), true);
    auto const third = InsertSection(*mainView, 10, new Sized(100, 30), true);
    auto const second = InsertSection(*mainView, 1, new Sized(120, 20), true);
    EXPECT_EQ(*(mainView->ChildBegin() + 1), second);
    EXPECT_EQ(*(mainView->ChildBegin() + 2), third);
    // Each section has a hidden header above its content; a line's width lies between and around.
    EXPECT_EQ(GetRecommendedSize(mainView), (moxcore::geom::PointT<float>{122, 10 + 20 + 30 + 4}));

    first->GetHeaderView()->UI_Show(true);
    mainView->MaximizePopupSection(second);
    EXPECT_THAT(Visibility(*mainView), ElementsAre(false, true, false));
    EXPECT_FALSE(first->GetHeaderView()->UI_IsViewVisible());
    EXPECT_EQ(GetRecommendedSize(mainView).y, 22);
    mainView->MaximizePopupSection(nullptr);
    EXPECT_THAT(Visibility(*mainView), ElementsAre(true, true, true));
    EXPECT_FALSE(first->GetHeaderView()->UI_IsViewVisible());
}

TEST(PopupSections, AHeaderShowsItsIconAndLabelAboveTheContent) {
    boost::intrusive_ptr<PopupSectionView> const section(
        new PopupSectionView(new Sized(50, 10), moxcore::string::AsciiToUTF16("Review"),
                             BindImageSupplyFunction("S_Copy_16", &utility::GetResourceManager)));
    section->GetHeaderView()->UI_Show(true);
    auto const bare = GetRecommendedSize(section->GetHeaderView());
    section->GetHeaderView()->SetLabelText(moxcore::string::AsciiToUTF16("Review of the whole"));
    EXPECT_GT(GetRecommendedSize(section->GetHeaderView()).x, bare.x);
    section->GetHeaderView()->SetIconImageSupplyFunction(nullptr);
    EXPECT_EQ(GetRecommendedSize(section).y,
              GetRecommendedSize(section->GetHeaderView()).y + 1 + 10);
}

TEST(PopupSections, ASectionIsNeverWithoutContent) {
    boost::intrusive_ptr<PopupSectionView> const section(
        new PopupSectionView(nullptr, UTF16String(), nullptr));
    ASSERT_NE(section->GetContentView(), nullptr);
    boost::intrusive_ptr<Sized> const content(new Sized(50, 10));
    section->SetContentView(content);
    EXPECT_EQ(content->UI_GetLocalRectF(true), (moxcore::geom::RectT<float>{0, 0, 50, 10}));
    EXPECT_TRUE(content->UI_IsViewVisible());
    section->SetContentView(nullptr);
    EXPECT_NE(section->GetContentView(), content);
    EXPECT_EQ(content->UI_GetParentNode(), nullptr);
    EXPECT_EQ(section->ChildCount(), 2U);
}

TEST(Images, AHandlerNamesItsPictureAndTheResourceManagerOfTheMoment) {
    int asked = 0;
    auto const handler =
        BindImageSupplyFunction("S_Copy_16", [&asked]() -> moxui::utility::ResourceManager& {
            ++asked;
            return utility::GetResourceManager();
        });
    EXPECT_EQ(asked, 0);
    for (int i = 1; i <= 2; ++i) {
        moxui::controls::UI_PictureSupplyMessage message;
        (*handler)(&message);
        EXPECT_EQ(message.GetIconName(), "S_Copy_16");
        EXPECT_EQ(message.GetResources(), &utility::GetResourceManager());
        ASSERT_NE(message.GetPicture(), nullptr);
        EXPECT_EQ(asked, i);
    }
    boost::intrusive_ptr<SizedStaticImage> const image(new SizedStaticImage);
    EXPECT_EQ(image->UI_GetRecommendedSize(nullptr), (moxcore::geom::PointT<float>{}));
    image->SetImageSupplyFunction(handler);
    EXPECT_EQ(image->UI_GetRecommendedSize(nullptr), (moxcore::geom::PointT<float>{16, 16}));
    image->SetImageSupplyFunction(
        BindImageSupplyFunction("NoSuchPicture", &utility::GetResourceManager));
    EXPECT_EQ(image->UI_GetRecommendedSize(nullptr), (moxcore::geom::PointT<float>{}));

    moxui::controls::UI_PictureSupplyMessage message;
    EXPECT_THROW((*BindImageSupplyFunction("S_Copy_16", nullptr))(&message),
                 std::bad_function_call);
}

/// The window of a popup that is shown; null when there is none.
QWidget* PopupWindow() {
    for (auto* const widget : QApplication::topLevelWidgets())
        if (widget->isVisible() && widget->findChild<QWidget*>("PopupMainView")) return widget;
    return nullptr;
}

/// A host's window with a button, and a popup that hangs from it.
class PopupManagerTest : public testing::Test {
protected:
    PopupManagerTest() {
        button.setParent(&window.Widget());
        button.setGeometry(300, 10, 60, 20);
        button.show();
        window.Widget().move(200, 100);
        anchor = moxui::backend::WrapWidget(&button);
        RunEvents();
    }

    testsupport::TestWindow window;
    QWidget button;
    boost::intrusive_ptr<moxui::ui::UI_Node> anchor;
    std::shared_ptr<PopupManager> manager = CreatePopupManager();
};

TEST_F(PopupManagerTest, HangsTheSectionsUnderItsParent) {
    boost::intrusive_ptr<Sized> const content(new Sized(200, 80));
    manager->ShowWindow();
    EXPECT_EQ(PopupWindow(), nullptr) << "there is nothing to hang it from";
    manager->SetParent(anchor);
    auto const section = manager->InsertPopupSection(0, content);
    manager->ShowWindow();
    RunEvents();
    auto* const popup = PopupWindow();
    ASSERT_NE(popup, nullptr);
    auto const mainView = WidgetOf(*section).parentWidget();
    EXPECT_EQ(mainView->size(), QSize(202, 82));
    EXPECT_EQ(popup->size(), mainView->size());
    EXPECT_EQ(popup->mapToGlobal(QPoint(popup->width(), 0)),
              button.mapToGlobal(QPoint(button.width(), button.height() + 4)));

    content->size = {100, 40};
    manager->MaximizePopupSection(section);
    RunEvents();
    EXPECT_EQ(mainView->size(), QSize(102, 42));
    manager->HideWindow();
    EXPECT_EQ(PopupWindow(), nullptr);
    manager->ShowWindow();
    EXPECT_EQ(PopupWindow(), popup) << "the window stays the same";
    manager->DestructWindow();
    EXPECT_EQ(manager->InsertPopupSection(0, nullptr), nullptr);
    manager->ShowWindow();
    manager->MaximizePopupSection(nullptr);
    EXPECT_EQ(PopupWindow(), nullptr);
}

TEST_F(PopupManagerTest, HangsFromTheParentThatItWasGivenLast) {
    QWidget other;
    other.setGeometry(400, 250, 300, 200);
    other.show();
    auto const otherAnchor = moxui::backend::WrapWidget(&other);
    manager->InsertPopupSection(0, new Sized(200, 80));
    auto const isBelow = [](QWidget& widget) {
        auto& popup = *PopupWindow();
        return popup.mapToGlobal(QPoint(popup.width(), 0)) ==
               widget.mapToGlobal(QPoint(widget.width(), widget.height() + 4));
    };
    manager->SetParent(anchor);
    manager->ShowWindow();
    manager->SetParent(otherAnchor);
    RunEvents();
    EXPECT_TRUE(isBelow(other));
    window.Widget().hide();
    EXPECT_NE(PopupWindow(), nullptr);
    other.hide();
    EXPECT_EQ(PopupWindow(), nullptr);

    window.Widget().show();
    manager->SetParent(anchor);
    manager->ShowWindow();
    RunEvents();
    EXPECT_TRUE(isBelow(button));
    window.Widget().hide();
    EXPECT_EQ(PopupWindow(), nullptr);
}

TEST_F(PopupManagerTest, HasOneLineAroundItInBothThemes) {
    using namespace moxui::skins;
    manager->SetParent(anchor);
    manager->InsertPopupSection(0, new Sized(200, 80));
    manager->ShowWindow();
    for (auto const kind : {ThemeKind::Light, ThemeKind::Dark}) {
        ThemeProvider::SetTheme(kind);
        RunEvents();
        auto const picture = testsupport::PictureOf(*PopupWindow());
        auto const gray = [](HalcynGrayColor level) {
            auto const color = ThemeProvider::Get().GetGray(level);
            return QColor::fromRgbF(color.red, color.green, color.blue);
        };
        for (auto const& [x, y] : {std::pair{0, 40}, {201, 40}, {100, 0}, {100, 81}})
            EXPECT_EQ(picture.pixelColor(x, y), gray(HalcynGrayColor::Level4)) << x << ", " << y;
        for (auto const& [x, y] : {std::pair{1, 40}, {200, 40}, {100, 1}, {100, 80}})
            EXPECT_EQ(picture.pixelColor(x, y), gray(HalcynGrayColor::Level1)) << x << ", " << y;
    }
}

TEST_F(PopupManagerTest, TellsOfEveryClosingByTheUserInTheOrderOfAdding) {
    std::string calls;
    manager->SetParent(anchor);
    manager->InsertPopupSection(0, new Sized(200, 80));
    manager->AddNotifyOnCommit([&] { calls += "a"; });
    manager->AddNotifyOnCommit([&] { calls += "b"; });
    for (int i = 0; i < 2; ++i) {
        manager->ShowWindow();
        manager->ShowWindow();
        RunEvents();
        QTest::keyClick(PopupWindow(), Qt::Key_Escape);
        RunEvents();
        EXPECT_EQ(PopupWindow(), nullptr);
    }
    EXPECT_EQ(calls, "abab");
    manager->ShowWindow();
    manager->HideWindow();
    EXPECT_EQ(calls, "abab") << "the program's own hiding is no closing";
}

TEST_F(PopupManagerTest, TellsTheRestWhenOneOfThemThrows) {
    std::string calls;
    std::vector<std::string> failed;
    moxcore::threads::MainThread::SetFailureObserver([&](std::exception_ptr const& thrown) {
        failed.push_back(moxcore::config::ExtractMessageFromException(thrown));
    });
    manager->SetParent(anchor);
    manager->InsertPopupSection(0, new Sized(200, 80));
    manager->AddNotifyOnCommit([] { throw std::runtime_error("of the host"); });
    manager->AddNotifyOnCommit([&] { calls += "a"; });
    manager->AddNotifyOnCommit(nullptr);  // a broken contract, and the end
    manager->AddNotifyOnCommit([&] { calls += "b"; });
    manager->ShowWindow();
    RunEvents();
    QTest::keyClick(PopupWindow(), Qt::Key_Escape);
    RunEvents();
    EXPECT_EQ(calls, "a");
    EXPECT_THAT(failed, ElementsAre("of the host", "bad_function_call"));
    moxcore::threads::MainThread::SetFailureObserver(nullptr);
}

TEST_F(PopupManagerTest, MayGoWhileItTellsOfItsClosing) {
    int calls = 0;
    manager->SetParent(anchor);
    manager->InsertPopupSection(0, new Sized(200, 80));
    manager->AddNotifyOnCommit([&] { manager.reset(); });
    manager->AddNotifyOnCommit([&] { ++calls; });
    manager->ShowWindow();
    RunEvents();
    QTest::keyClick(PopupWindow(), Qt::Key_Escape);
    RunEvents();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(PopupWindow(), nullptr);
}

TEST_F(PopupManagerTest, OutlivesTheNodeThatItHungFrom) {
    manager->SetParent(anchor);
    manager->InsertPopupSection(0, new Sized(200, 80));
    anchor.reset();
    manager->ShowWindow();
    EXPECT_EQ(PopupWindow(), nullptr);
}

class ScreenManagerTest : public PopupManagerTest {
protected:
    ScreenManagerTest() {
        manager->SetParent(anchor);
        other = manager->InsertPopupSection(0, new Sized(200, 30));
        screenManager = CreateShareForReviewScreenManager(model, manager);
        RunEvents();
    }

    /// The view that the popup shows after the view model has called for `id`.
    boost::intrusive_ptr<view::PopupBaseView> ViewAfter(ID id) {
        model->SetCurrentViewID(id);
        RunEvents();
        return testsupport::Find<view::PopupBaseView>(
            static_cast<moxui::ui::UI_Container&>(*other->UI_GetParentNode()));
    }

    std::shared_ptr<ShareForReviewViewModel> model = std::make_shared<ShareForReviewViewModel>();
    boost::intrusive_ptr<PopupSectionView> other;
    std::shared_ptr<ShareForReviewScreenManager> screenManager;
};

TEST_F(ScreenManagerTest, ShowsANewViewForEveryID) {
    EXPECT_EQ(PopupWindow(), nullptr);
    auto const first = ViewAfter(ID::SigninPrompt);
    ASSERT_NE(first, nullptr);
    EXPECT_NE(PopupWindow(), nullptr);
    EXPECT_TRUE(other->UI_IsViewVisible());

    ViewAfter(ID::SelectProject);
    EXPECT_FALSE(other->UI_IsViewVisible());
    auto const review = ViewAfter(ID::ReviewInQuillo);
    EXPECT_TRUE(other->UI_IsViewVisible());
    EXPECT_NE(ViewAfter(ID::SigninPrompt), first);
    EXPECT_EQ(review->UI_GetParentNode(), nullptr) << "the view before is let go";

    EXPECT_EQ(ViewAfter(ID::Initial), nullptr);
    EXPECT_NE(PopupWindow(), nullptr) << "a step without a view is an empty popup";
}

TEST_F(ScreenManagerTest, ClosingThePopupAndTheViewModelsNoneMeetInTheMiddle) {
    ViewAfter(ID::SigninPrompt);
    QTest::keyClick(PopupWindow(), Qt::Key_Escape);
    RunEvents();
    EXPECT_EQ(model->GetCurrentViewID(), ID::None);
    EXPECT_EQ(PopupWindow(), nullptr);

    model->EnableCurrentViewIDMessages(true);
    ViewAfter(ID::SigninPrompt);
    EXPECT_NE(PopupWindow(), nullptr);
    ViewAfter(ID::None);
    EXPECT_EQ(PopupWindow(), nullptr);
}

TEST_F(ScreenManagerTest, AViewTellsThePopupThatItIsInOfItsMenus) {
    auto const view = ViewAfter(ID::ReviewInQuillo);
    auto const popup = boost::dynamic_pointer_cast<moxui::controls::UI_TouchPopupContainer>(
        view->UI_GetRootNode());
    ASSERT_NE(popup, nullptr);
    view->SetPreShowPopupMenu();
    EXPECT_TRUE(popup->GetPopupMenuShowing());
    view->SetPostShowPopupMenu();
    EXPECT_FALSE(popup->GetPopupMenuShowing());

    ViewAfter(ID::SigninPrompt);
    view->SetPreShowPopupMenu();
    EXPECT_FALSE(popup->GetPopupMenuShowing()) << "it is in no popup any more";
}

TEST_F(ScreenManagerTest, AMenuThatIsOpenWhenTheStepChangesEndsWithItsView) {
    auto const view = ViewAfter(ID::ReviewInQuillo);
    auto const popup = boost::dynamic_pointer_cast<moxui::controls::UI_TouchPopupContainer>(
        view->UI_GetRootNode());
    auto* const presets = PopupWindow()->findChild<QComboBox*>();
    ASSERT_NE(presets, nullptr);
    presets->showPopup();
    RunEvents();
    ASSERT_TRUE(popup->GetPopupMenuShowing());
    ViewAfter(ID::WaitingInQueue);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_FALSE(popup->GetPopupMenuShowing()) << "no press outside would close the popup";
}

TEST_F(ScreenManagerTest, NothingFollowsTheViewModelOnceItIsGone) {
    ViewAfter(ID::SigninPrompt);
    screenManager.reset();
    EXPECT_NE(ViewAfter(ID::ReviewInQuillo), nullptr) << "the last view stays";
    manager->HideWindow();
    ViewAfter(ID::SigninPrompt);
    EXPECT_EQ(PopupWindow(), nullptr);
    model.reset();
    manager->ShowWindow();
    RunEvents();
    QTest::keyClick(PopupWindow(), Qt::Key_Escape);
    RunEvents();
    EXPECT_EQ(PopupWindow(), nullptr);
}

}  // namespace
}  // namespace quillomoxui
