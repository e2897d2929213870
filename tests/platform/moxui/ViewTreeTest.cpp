#include <gmock/gmock.h>

#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <algorithm>
#include <stdexcept>
#include <thread>

#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/threads/MainThread.h"
#include "moxui/controls/UI_ControlView.h"
#include "moxui/controls/UI_HotTextURL.h"
#include "moxui/controls/UI_MultiColumnTree.h"
#include "moxui/controls/UI_Popup.h"
#include "moxui/controls/UI_TextButton.h"
#include "moxui/skins/ThemeProvider.h"
#include "moxui/ui/UI_SubView.h"
#include "support/TestWindow.h"

namespace moxui::ui {
namespace {

using controls::UI_ControlView;
using ::testing::ElementsAre;
using testsupport::RunEvents;
using testsupport::TestWindow;
using testsupport::WidgetOf;

template <class View = UI_SubView>
boost::intrusive_ptr<View> Make(std::string const& id) {
    boost::intrusive_ptr<View> view(new View);
    view->UI_SetNodeID(id);
    return view;
}

std::vector<std::string> IDs(UI_Container const& container) {
    std::vector<std::string> ids;
    for (auto child = container.ChildBegin(); child != container.ChildEnd(); ++child)
        ids.push_back((*child)->UI_GetNodeID());
    return ids;
}

TEST(ViewTree, KeepsChildrenInTheOrderAskedForAndKnowsItsWayUp) {
    auto const parent = Make("parent");
    auto const other = Make("other");
    auto const a = Make("a"), b = Make("b"), c = Make("c");
    parent->ChildPushBack(b);
    parent->ChildInsert(0, a);
    parent->ChildInsert(99, c);
    EXPECT_THAT(IDs(*parent), ElementsAre("a", "b", "c"));

    other->ChildPushBack(b);
    EXPECT_THAT(IDs(*parent), ElementsAre("a", "c"));
    EXPECT_EQ(b->UI_GetParentNode(), other);
    parent->ChildInsert(0, c);
    EXPECT_THAT(IDs(*parent), ElementsAre("c", "a"));

    parent->ChildPushBack(other);
    EXPECT_EQ(b->UI_GetRootNode(), parent);
    EXPECT_EQ(parent->UI_ChildGetFromID("b"), b);
    EXPECT_EQ(parent->UI_ChildGetFromID("nowhere"), nullptr);

    parent->ChildRequestRemove(other);
    parent->ChildRequestRemove(other);
    EXPECT_EQ(parent->UI_ChildGetFromID("b"), nullptr);
    EXPECT_EQ(b->UI_GetRootNode(), other);
}

/// A view that cannot draw itself.
class Undrawable : public UI_ControlView {
public:
    void UI_Draw(drawbot::Drawbot*) const override { throw std::runtime_error("draw"); }
};

/// A view that fails whenever the theme changes.
class Unthemable : public UI_ControlView {
public:
    void UI_ThemeChanged() override { throw std::runtime_error("theme"); }
};

TEST(ViewTree, WhatAFunctionThrowsReachesTheFailureObserverAndNotQtsLoop) {
    std::vector<std::string> heard;
    moxcore::threads::MainThread::SetFailureObserver([&](std::exception_ptr const& thrown) {
        heard.push_back(moxcore::config::ExtractMessageFromException(thrown));
    });
    auto const fail = [](char const* what) {
        return [what](auto const&...) { throw std::runtime_error(what); };
    };
    TestWindow window;
    boost::intrusive_ptr<controls::UI_TextButton> const button(
        new controls::UI_TextButton(moxcore::string::AsciiToUTF16("Share")));
    button->NotifyWhenChanged(fail("button"));
    int others = 0;
    button->NotifyWhenChanged([&](auto*) { ++others; });
    window.Add(button, {0, 0, 100, 20});
    QTest::mouseClick(&WidgetOf(*button), Qt::LeftButton);
    EXPECT_EQ(others, 1);

    auto const link = Make<UI_ControlView>("link");
    link->UI_AddCustomMouseEventFunction(std::make_shared<UI_Node::MouseEventFunction>(
                                             [](UI_Node*, MouseEvent const& event, bool&) -> bool {
                                                 if (event.GetAction() == PointerAction::Press)
                                                     throw std::runtime_error("link");
                                                 return false;
                                             }),
                                         0);
    window.Add(link, {0, 30, 100, 20});
    QTest::mouseClick(&WidgetOf(*link), Qt::LeftButton);

    boost::intrusive_ptr<controls::UI_MultiColumnTree> const tree(
        new controls::UI_MultiColumnTree(1));
    tree->SetRowsSelectionChangedFunction(fail("select"));
    tree->SetRowActivatedFunction(fail("activate"));
    tree->SetRowDisclosureChangedFunction(fail("open"));
    auto const row = tree->CreateAndAppendRow(nullptr, true, false);
    static_cast<void>(tree->CreateAndAppendRow(row, true, false));
    window.Add(tree, {0, 60, 100, 80});
    for (auto const key : {Qt::Key_Down, Qt::Key_Return, Qt::Key_Right})
        QTest::keyClick(&WidgetOf(*tree), key);

    boost::intrusive_ptr<controls::UI_Popup> const menu(new controls::UI_Popup(0, false));
    menu->AddItem(moxcore::string::AsciiToUTF16("one"));
    menu->SetPreShowPopupMenuFunction(fail("before"));
    menu->SetPostShowPopupMenuFunction(fail("after"));
    window.Add(menu, {0, 150, 100, 20});
    QTest::keyClick(&WidgetOf(*menu), Qt::Key_Space);
    RunEvents();
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
    RunEvents();
    EXPECT_THAT(heard,
                ElementsAre("button", "link", "select", "activate", "open", "before", "after"));

    window.Add(Make<Undrawable>("undrawable"), {0, 180, 100, 20});
    RunEvents();
    EXPECT_THAT(heard, testing::Contains("draw"));

    heard.clear();
    boost::intrusive_ptr<controls::UI_HotTextURL> const url(
        new controls::UI_HotTextURL(moxcore::string::AsciiToUTF16("link")));
    url->SetURL(moxcore::string::AsciiToUTF16("https://quillo.example"));
    controls::UI_HotTextURL::SetOpener(fail("opener"));
    window.Add(url, {0, 210, 100, 20});
    QTest::keyClick(&WidgetOf(*url), Qt::Key_Space);
    controls::UI_HotTextURL::SetOpener(nullptr);
    auto const unthemable = Make<Unthemable>("unthemable");
    unthemable->ChildPushBack(Make<Unthemable>("below it"));
    window.Add(unthemable, {0, 240, 100, 20});
    heard.erase(std::remove(heard.begin(), heard.end(), "draw"), heard.end());
    EXPECT_THAT(heard, ElementsAre("opener"));
    heard.clear();
    skins::ThemeProvider::SetTheme(skins::ThemeKind::Light);
    skins::ThemeProvider::SetTheme(skins::ThemeKind::Dark);
    RunEvents();
    EXPECT_EQ(std::count(heard.begin(), heard.end(), "theme"), 2 * 2);
    moxcore::threads::MainThread::SetFailureObserver(nullptr);
}

TEST(ViewTree, AViewIsSeenOnlyInAWindowAndWhileItIsShown) {
    auto const view = Make("view");
    view->UI_Show(true);
    EXPECT_FALSE(WidgetOf(*view).isVisible()) << "it must not become a window of its own";

    TestWindow window;
    window.Container().ChildPushBack(view);
    EXPECT_TRUE(WidgetOf(*view).isVisible());
    view->UI_Show(false);
    EXPECT_FALSE(WidgetOf(*view).isVisible());
    view->UI_Show(true);
    window.Container().ChildRequestRemove(view);
    EXPECT_FALSE(WidgetOf(*view).isVisible());
    EXPECT_TRUE(view->UI_IsViewVisible());
    EXPECT_EQ(view->UI_GetDrawSupplier(), nullptr);

    auto const hidden = Make("hidden");
    hidden->UI_Show(false);
    view->ChildPushBack(hidden);
    window.Container().ChildPushBack(view);
    EXPECT_FALSE(WidgetOf(*hidden).isVisible()) << "its parent alone is shown";
}

TEST(ViewTree, KeepsFractionsAndRoundsThemOnTheScreenWithoutGaps) {
    TestWindow window;
    auto const left = Make("left"), right = Make("right");
    window.Add(left, {0.25F, 2.5F, 10.4F, 14});
    window.Add(right, {10.65F, 2.5F, 5, 14});
    EXPECT_EQ(left->UI_GetLocalRectF(true).x, 0.25F);
    EXPECT_EQ(left->UI_GetLocalRectF(false), (moxcore::geom::RectT<float>{0, 0, 10.4F, 14}));
    EXPECT_EQ(WidgetOf(*left).geometry().right() + 1, WidgetOf(*right).geometry().left());

    auto const inWindow = window.Widget().mapToGlobal(QPoint(11, 3));
    auto const global = right->UI_LocalToGlobalF({0, 0, 5, 14});
    EXPECT_EQ(global.x, static_cast<float>(inWindow.x()));
    EXPECT_EQ(global.y, static_cast<float>(inWindow.y()));
}

class Recording : public UI_ControlView {
public:
    bool UI_DoPointerEvent(UI_Node*, PointerEvent const& event) override {
        actions.push_back(event.GetAction());
        if (onEvent) onEvent();
        return takes;
    }
    std::vector<PointerAction> actions;
    bool takes = false;
    std::function<void()> onEvent;
};

TEST(ViewTree, PointerEventsGoToTheFunctionsThenToTheViewThenToItsParent) {
    TestWindow window;
    auto const parent = Make<Recording>("parent");
    auto const child = Make<Recording>("child");
    window.Add(parent, {0, 0, 100, 100});
    parent->ChildPushBack(child);
    child->UI_SetLocalRectF({10, 10, 50, 50});
    child->UI_Show(true);

    parent->actions.clear();
    std::string calls;
    bool take = false;
    auto const function = [&](char const* name) {
        return std::make_shared<UI_Node::MouseEventFunction>(
            [&, name](UI_Node* node, MouseEvent const& event, bool& handled) {
                if (event.GetAction() != PointerAction::Press) return false;
                EXPECT_EQ(node, child.get());
                EXPECT_EQ(event.GetButton(), 1);
                calls += name;
                handled = take;
                return take;
            });
    };
    child->UI_AddCustomMouseEventFunction(function("late "), 5);
    child->UI_AddCustomMouseEventFunction(function("early "), 0);

    QTest::mouseClick(&WidgetOf(*child), Qt::LeftButton);
    EXPECT_EQ(calls, "early late ");
    EXPECT_THAT(child->actions, ElementsAre(PointerAction::Press, PointerAction::Release));
    EXPECT_THAT(parent->actions, ElementsAre(PointerAction::Press, PointerAction::Release));

    take = true;
    calls.clear();
    child->actions.clear();
    QTest::mouseClick(&WidgetOf(*child), Qt::LeftButton);
    EXPECT_EQ(calls, "early ");
    EXPECT_THAT(child->actions, ElementsAre(PointerAction::Release));
}

TEST(ViewTree, EnterAndSpacePressWhatHasTheFocusAsAMouseDoes) {
    TestWindow window;
    auto const view = Make<Recording>("view");
    window.Add(view, {0, 0, 50, 20});
    view->UI_SetFocusable(true, AccessibleRole::ListItem);
    view->UI_SetFocus();
    for (auto const key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Enter}) {
        view->actions.clear();
        QTest::keyClick(&WidgetOf(*view), key);
        EXPECT_THAT(view->actions, ElementsAre(PointerAction::Press, PointerAction::Release));
    }
    auto* const accessible = QAccessible::queryAccessibleInterface(&WidgetOf(*view));
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->role(), QAccessible::ListItem);
    view->actions.clear();
    accessible->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_THAT(view->actions, ElementsAre(PointerAction::Press, PointerAction::Release));
}

TEST(ViewTree, TabGoesInReadingOrderWhateverTheOrderOfTheChildren) {
    TestWindow window;
    std::vector<boost::intrusive_ptr<UI_ControlView>> views;
    for (auto const& rect : std::vector<moxcore::geom::RectT<float>>{
             {100, 50, 20, 20}, {100, 0, 20, 20}, {0, 50, 20, 20}, {0, 0, 20, 20}}) {
        views.push_back(Make<UI_ControlView>(""));
        window.Add(views.back(), rect);
        views.back()->UI_SetFocusable(true, AccessibleRole::Button);
    }
    views[3]->UI_SetFocus();
    for (std::size_t const next : {1U, 2U, 0U, 3U}) {
        QTest::keyClick(window.Widget().focusWidget(), Qt::Key_Tab);
        EXPECT_TRUE(views[next]->UI_HasFocus()) << next;
    }
    views[1]->UI_SetEnabled(false);
    QTest::keyClick(window.Widget().focusWidget(), Qt::Key_Backtab);
    QTest::keyClick(window.Widget().focusWidget(), Qt::Key_Backtab);
    EXPECT_TRUE(views[2]->UI_HasFocus());
}

TEST(ViewTree, AViewMayGoWhileItIsHandlingAnEvent) {
    TestWindow window;
    auto view = Make<Recording>("view");
    window.Add(view, {0, 0, 50, 50});
    auto& widget = WidgetOf(*view);
    moxcore::utility::RefCountedWeakPtr<Recording> const weak(view.get());
    view->onEvent = [&] {
        window.Container().ChildRequestRemove(view);
        view.reset();
    };
    QTest::mousePress(&widget, Qt::LeftButton);
    EXPECT_EQ(weak.Lock(), nullptr);
    RunEvents();
}

TEST(ViewTree, ViewsMayGoInAnyOrderOnAnyThread) {
    TestWindow window;
    auto parent = Make("parent");
    auto child = Make("child");
    auto grandchild = Make("grandchild");
    window.Add(parent, {0, 0, 50, 50});
    parent->ChildPushBack(child);
    child->ChildPushBack(grandchild);

    window.Container().ChildRequestRemove(parent);
    std::thread([gone = std::move(parent)]() mutable { gone.reset(); }).join();
    RunEvents();
    EXPECT_EQ(child->UI_GetParentNode(), nullptr);
    EXPECT_EQ(grandchild->UI_GetParentNode(), child);
    std::thread([gone = std::move(child)]() mutable { gone.reset(); }).join();
    RunEvents();
    window.Add(grandchild, {0, 0, 5, 5});
    EXPECT_TRUE(WidgetOf(*grandchild).isVisible());
}

TEST(ViewTree, ANodeOutlivesItsWidgetAsAnEmptyOne) {
    auto window = std::make_unique<TestWindow>();
    auto const view = Make<UI_ControlView>("view");
    window->Add(view, {0, 0, 50, 50});
    delete &WidgetOf(*view);
    view->UI_Show(false);
    view->UI_SetLocalRectF({0, 0, 9, 9});
    view->UI_SetEnabled(false);
    view->UI_SetToolTip({}, 400);
    view->UI_Invalidate();
    EXPECT_FALSE(view->UI_IsEnabled());
    window.reset();
}

TEST(ViewTree, AToolTipIsShownAsItStands) {
    auto const view = Make("view");
    for (char const* const text : {"plain", "<b>not bold</b> & so", ""}) {
        auto const utf16 = moxcore::string::UTF16String(text, text + strlen(text));
        view->UI_SetToolTip(utf16, 400);
        EXPECT_EQ(view->UI_GetToolTip(), utf16);
        EXPECT_FALSE(WidgetOf(*view).toolTip().contains("<b>"));
    }
}

}  // namespace
}  // namespace moxui::ui
