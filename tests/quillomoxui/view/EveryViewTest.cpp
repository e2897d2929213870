// What holds for every view of the popup alike.

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QMetaEnum>
#include <QPushButton>
#include <QScrollBar>
#include <QStyle>
#include <QTest>
#include <cstddef>
#include <map>
#include <mutex>
#include <set>

#include "moxui/backend/HostWidget.h"
#include "quillomoxui/sharedui/PopupManager.h"
#include "quillomoxui/sharedui/ShareForReviewScreenManager.h"
#include "quillomoxui/view/Factory.h"
#include "quillomoxui/view/PopupBaseView.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"
#include "tests/quillomoxui/view/Locations.h"
#include "tests/support/TestWindow.h"

namespace quillomoxui {

class BindingCounter {
public:
    template <class T, class Arg>
    static std::size_t Count(NotifyingPropertyHost<T, Arg> const& host) {
        std::lock_guard lock(PropertyMutex(&host));
        return host.bindings ? host.bindings->size() : 0;
    }
};

}  // namespace quillomoxui

namespace quillomoxui::view {
namespace {

using moxcore::string::AsciiToUTF16;
using testsupport::RunEvents;
using ID = ShareForReviewViewID;

constexpr ID kEveryView[] = {ID::DebugView,      ID::SelectProject,    ID::SelectFolder,
                             ID::ReviewInQuillo, ID::SigninPrompt,     ID::CopyLinkSection,
                             ID::WaitingInQueue, ID::EncodingProgress, ID::UploadInProgress};

/// Whether a screen reader that goes through all below `node` comes to `wanted`.
bool IsFoundBelow(QAccessibleInterface& node, QObject const& wanted) {
    for (int i = 0; i < node.childCount(); ++i) {
        auto* const child = node.child(i);
        if (child && (child->object() == &wanted || IsFoundBelow(*child, wanted))) return true;
    }
    return false;
}

/// A share in the middle of its way, by a user with two workspaces of projects.
class EveryViewTest : public testing::Test {
protected:
    EveryViewTest() {
        auto const account = MakeNode<QuilloAccount>("Acme", user);
        user->SetAccounts({account, MakeNode<QuilloAccount>("Zeta", user)});
        auto const workspaces = ReceiveWorkspaces(account, {"Promos", "Series"});
        ReceiveProjects(workspaces.at(1), {"Pilot"});
        auto const project = ReceiveProjects(workspaces.at(0), {"Spring", "Summer"}).front();
        auto const folders = Receive(project->GetRootFolder(), {"Cuts", "Dailies"});
        Receive(folders.front(), {"Trailer"});
        user->SetProposedAccount(account);
        user->SetSelection(folders.front());
        user->SetProposedSelection(folders.front());
        model->SetUser(user);
        model->SetActiveAssetName(AsciiToUTF16("Opening titles"));
        model->SetReviewLinkURL(AsciiToUTF16("http://127.0.0.1/r/abc"));
        RunEvents();
    }

    std::shared_ptr<QuilloUser> user = std::make_shared<QuilloUser>();
    std::shared_ptr<ShareForReviewViewModel> model = std::make_shared<ShareForReviewViewModel>();
};

/// The popup of a host, as its user works it with the keyboard.
class EveryViewInThePopupTest : public EveryViewTest {
protected:
    EveryViewInThePopupTest() {
        button.setGeometry(500, 10, 60, 20);
        button.show();
        popupManager->SetParent(anchor);
        screenManager = CreateShareForReviewScreenManager(model, popupManager);
        RunEvents();
    }
    ~EveryViewInThePopupTest() override { QGuiApplication::setLayoutDirection(Qt::LeftToRight); }

    QWidget& Show(ID id) {
        model->EnableCurrentViewIDMessages(true);
        model->SetCurrentViewID(id);
        RunEvents();
        return *Popup();
    }
    static QWidget* Popup() {
        for (auto* const widget : QApplication::topLevelWidgets())
            if (widget->isVisible() && widget->findChild<QWidget*>("PopupMainView")) return widget;
        return nullptr;
    }
    static QWidget* Press(QWidget& popup, Qt::Key key) {
        auto* const focused = QApplication::focusWidget();
        QTest::keyClick(focused ? focused : &popup, key);
        RunEvents();
        return QApplication::focusWidget();
    }

    /// Whatever a user can do something with, seen or not by the keyboard.
    static std::set<QWidget*> Controls(QWidget& popup) {
        std::set<QWidget*> controls;
        for (auto* const widget : popup.findChildren<QWidget*>()) {
            if (!widget->isVisible() || !widget->isEnabled()) continue;
            auto* const told = QAccessible::queryAccessibleInterface(widget);
            if (!told) continue;
            auto* const actions = told->actionInterface();
            bool const canBePressed = actions && actions->actionNames().contains(
                                                     QAccessibleActionInterface::pressAction());
            if (canBePressed || (told->state().focusable && widget->focusPolicy() != Qt::NoFocus))
                controls.insert(widget);
        }
        return controls;
    }

    /// Where Tab stops, from the first control on.
    static std::vector<QWidget*> TabStops(QWidget& popup) {
        std::vector<QWidget*> stops;
        for (auto* stop = Press(popup, Qt::Key_Tab); stop && stops.size() < 50;
             stop = Press(popup, Qt::Key_Tab)) {
            if (!stops.empty() && stop == stops.front()) break;
            stops.push_back(stop);
        }
        return stops;
    }

    testsupport::TestWindow window{600, 100};
    QPushButton button{&window.Widget()};
    boost::intrusive_ptr<moxui::ui::UI_Node> anchor = moxui::backend::WrapWidget(&button);
    std::shared_ptr<PopupManager> popupManager = CreatePopupManager();
    std::shared_ptr<ShareForReviewScreenManager> screenManager;
};

TEST_F(EveryViewInThePopupTest, HasNamedControlsThatTheKeyboardReachesInReadingOrderAndShows) {
    std::vector<std::pair<ID, Qt::LayoutDirection>> cases;
    for (auto const direction : {Qt::LeftToRight, Qt::RightToLeft})
        for (auto const id : kEveryView)
            cases.emplace_back(id, direction);
    for (auto const& [id, direction] : cases) {
        SCOPED_TRACE(testing::Message() << int(id) << ' ' << direction);
        QGuiApplication::setLayoutDirection(direction);
        auto& popup = Show(id);
        auto unreached = Controls(popup);
        EXPECT_FALSE(unreached.empty());
        for (auto* const control : unreached) {
            auto* const told = QAccessible::queryAccessibleInterface(control);
            EXPECT_NE(told->text(QAccessible::Name), "") << control->metaObject()->className();
            EXPECT_TRUE(IsFoundBelow(*QAccessible::queryAccessibleInterface(&popup), *control))
                << qPrintable(told->text(QAccessible::Name));
            EXPECT_NE(told->role(), QAccessible::Client)
                << qPrintable(told->text(QAccessible::Name));
        }

        auto const stops = TabStops(popup);
        QRect before;
        for (auto* const stop : stops) {
            auto const place = QStyle::visualRect(
                direction, popup.rect(), QRect(stop->mapTo(&popup, QPoint()), stop->size()));
            EXPECT_GE(place.bottom(), before.top()) << "Tab goes back up";
            if (place.center().y() >= before.top() && place.center().y() <= before.bottom()) {
                EXPECT_GE(place.left(), before.left()) << "Tab goes back along the row";
            }
            before = place;

            stop->setFocus(Qt::TabFocusReason);
            auto const focused = testsupport::PictureOf(popup);
            stop->clearFocus();
            EXPECT_NE(testsupport::PictureOf(popup), focused) << "the focus is not to be seen";
            stop->setFocus(Qt::TabFocusReason);
            unreached.erase(stop);
            // Within a list the arrows go on.
            if (QAccessible::queryAccessibleInterface(stop)->role() != QAccessible::ListItem)
                continue;
            for (auto const key : {Qt::Key_Home, Qt::Key_Down, Qt::Key_Down, Qt::Key_Down})
                unreached.erase(Press(popup, key));
        }
        for (auto* const control : unreached)
            ADD_FAILURE() << "out of the keyboard's reach: "
                          << qPrintable(QAccessible::queryAccessibleInterface(control)->text(
                                 QAccessible::Name));

        Press(popup, Qt::Key_Escape);
        EXPECT_EQ(Popup(), nullptr);
        EXPECT_EQ(model->GetCurrentViewID(), ID::None);
    }
}

/// The places of what is to be seen in `popup`, by widget.
std::map<QWidget*, QRect> PlacesIn(QWidget& popup) {
    std::map<QWidget*, QRect> places;
    for (auto* const widget : popup.findChildren<QWidget*>())
        // Qt's scroll bars are thinner than their places.
        if (widget->isVisible() && !qobject_cast<QScrollBar*>(widget))
            places.emplace(widget, QRect(widget->mapTo(&popup, QPoint()), widget->size()));
    return places;
}

TEST_F(EveryViewInThePopupTest, IsTheMirrorImageOfItselfFromRightToLeft) {
    for (auto const id : kEveryView) {
        SCOPED_TRACE(int(id));
        auto& popup = Show(id);
        auto const places = PlacesIn(popup);
        EXPECT_GT(places.size(), 3U);
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
        RunEvents();
        for (auto const& [widget, place] : PlacesIn(popup))
            EXPECT_EQ(place, QStyle::visualRect(Qt::RightToLeft, popup.rect(), places.at(widget)))
                << widget->metaObject()->className() << ' ' << qPrintable(widget->objectName());
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
        RunEvents();
        EXPECT_EQ(PlacesIn(popup), places);
    }
}

/// What an assistive tool finds below `node` in its order: role, name, value and what is special.
void Tell(QAccessibleInterface& node, std::vector<std::string>& told) {
    auto const* const widget = qobject_cast<QWidget*>(node.object());
    // The list of a menu is told, though it is closed.
    if (widget && !widget->isVisible() && !widget->inherits("QAbstractItemView")) return;
    if (widget && !widget->isVisible() && node.role() == QAccessible::Tree) return;
    auto const state = node.state();
    auto const name = node.text(QAccessible::Name).toStdString();
    if (!state.invisible && !name.empty()) {
        bool const isMenu = node.role() == QAccessible::ButtonMenu;  // has no key of its own in Qt
        auto const* const role = QMetaEnum::fromType<QAccessible::Role>().valueToKey(node.role());
        auto line = std::string(isMenu || !role ? "ButtonMenu" : role) + ": " + name;
        auto const value = node.text(QAccessible::Value).toStdString();
        if (!value.empty() && value != name) line += " = " + value;
        if (state.disabled) line += ", disabled";
        if (state.selected) line += ", selected";
        if (state.focused) line += ", focused";
        told.push_back(line);
    }
    for (int i = 0; i < node.childCount(); ++i)
        if (auto* const child = node.child(i)) Tell(*child, told);
}

TEST_F(EveryViewInThePopupTest, TellsAnAssistiveToolTheWholeOfAShare) {
    struct Step {
        ID id;
        std::vector<std::string> told;
    };
    model->SetEncodingProgress(0.5);
    // The user comes by keyboard.
    QTest::keyClick(&Show(ID::SigninPrompt), Qt::Key_Shift);
    for (auto const& [id, expected] : std::vector<Step>{
             {ID::SigninPrompt,
              {"StaticText: Share for review:", "StaticText: Opening titles", "ButtonMenu: More",
               "AlertMessage: Sign in to Quillo to create a review link to share with your team "
               "members.",
               "Button: Sign in to Quillo"}},
             {ID::ReviewInQuillo,
              {"StaticText: Share for review:", "StaticText: Opening titles",
               "ButtonMenu: More, focused", "StaticText: Location:", "Link: Promos/Spring/Cuts",
               "ComboBox: Preset Settings = Web 1080", "ListItem: Preset Settings",
               "ListItem: Web 720", "ListItem: Web 1080", "ListItem: Web 4k",
               "ListItem: ProRes 422", "Button: Share"}},
             {ID::SelectProject,
              {"StaticText: Select a location on Quillo", "ComboBox: Account = Acme, focused",
               "ListItem: Acme", "ListItem: Zeta", "List: Projects", "Grouping: Promos",
               "StaticText: Promos", "ListItem: Spring, selected", "StaticText: Spring",
               "ListItem: Summer", "StaticText: Summer", "Grouping: Series", "StaticText: Series",
               "ListItem: Pilot", "StaticText: Pilot", "Button: Cancel", "Button: Choose"}},
             {ID::SelectFolder,
              {"StaticText: Select a location on Quillo", "Button: Spring, Promos, focused",
               "StaticText: Spring", "StaticText: Promos", "Tree: Folders", "TreeItem: Assets",
               "TreeItem: Cuts, selected, focused", "TreeItem: Dailies", "Button: Cancel",
               "Button: Choose"}},
             {ID::EncodingProgress,
              {"StaticText: Share for Review", "StaticText: Link:",
               "StaticText: http://127.0.0.1/r/abc", "AlertMessage: Encoding in Progress...",
               "ProgressBar: Encoding in Progress... = 50 %", "Button: Cancel, focused"}},
             {ID::UploadInProgress,
              {"StaticText: Share for Review", "StaticText: Link:",
               "StaticText: http://127.0.0.1/r/abc", "AlertMessage: Upload in Progress...",
               "ProgressBar: Upload in Progress... = 50 %", "Button: Cancel, focused"}},
             {ID::CopyLinkSection,
              {"AlertMessage: The review link is ready.", "StaticText: Share for review:",
               "StaticText: Opening titles", "ButtonMenu: More, focused",
               "Link: http://127.0.0.1/r/abc", "Button: Copy link", "Button: Link settings"}},
         }) {
        SCOPED_TRACE(int(id));
        auto& popup = Show(id);
        std::vector<std::string> told;
        Tell(*QAccessible::queryAccessibleInterface(&popup), told);
        EXPECT_EQ(told, expected);
    }
}

template <class Host, class Object>
std::size_t Of(Object& object) {
    return BindingCounter::Count(static_cast<Host&>(object));
}

std::size_t BindingsBelow(QuilloNode& node) {
    auto count = Of<IDNotifyingPropertyHost>(node) + Of<NameNotifyingPropertyHost>(node) +
                 Of<FetchChildrenStateNotifyingPropertyHost>(node);
    if (auto* const account = dynamic_cast<QuilloAccount*>(&node))
        count += Of<WorkspacesNotifyingPropertyHost>(*account);
    if (auto* const workspace = dynamic_cast<QuilloWorkspace*>(&node))
        count += Of<ProjectsNotifyingPropertyHost>(*workspace);
    if (auto* const project = dynamic_cast<QuilloProject*>(&node))
        count += Of<RootFolderNotifyingPropertyHost>(*project);
    if (auto* const folder = dynamic_cast<QuilloFolder*>(&node))
        count += Of<FoldersNotifyingPropertyHost>(*folder);
    for (auto const& child : node.GetChildNodes())
        count += BindingsBelow(*child);
    return count;
}

std::size_t Bindings(ShareForReviewViewModel& model) {
    auto& user = *model.GetUser();
    return Of<UserNotifyingPropertyHost>(model) + Of<CurrentViewIDNotifyingPropertyHost>(model) +
           Of<ActiveAssetNameNotifyingPropertyHost>(model) +
           Of<ReviewLinkURLNotifyingPropertyHost>(model) +
           Of<IsLoggedInNotifyingPropertyHost>(model) +
           Of<EncodingStatusNotifyingPropertyHost>(model) +
           Of<EncodingProgressNotifyingPropertyHost>(model) +
           Of<AssetTypeIconNotifyingPropertyHost>(model) + Of<AccountsNotifyingPropertyHost>(user) +
           Of<IconNotifyingPropertyHost>(user) + Of<ProposedAccountNotifyingPropertyHost>(user) +
           Of<ProposedSelectionNotifyingPropertyHost>(user) +
           Of<SelectionPathNotifyingPropertyHost>(user) + Of<SelectionNotifyingPropertyHost>(user) +
           BindingsBelow(user);
}

TEST_F(EveryViewTest, IsBuiltAThousandTimesAndLeavesNoBindingAndNoWidgetBehind) {
    auto const before = Bindings(*model);
    testsupport::TestWindow window(400, 420);
    for (auto const id : kEveryView) {
        SCOPED_TRACE(int(id));
        model->SetCurrentViewID(id);
        RunEvents();
        auto const widgets = QApplication::allWidgets().size();
        moxcore::utility::RefCountedWeakPtr<PopupBaseView> last;
        for (int i = 0; i < 1000; ++i) {
            boost::intrusive_ptr<PopupBaseView> const view(factory::CreateView(id, model));
            last = moxcore::utility::RefCountedWeakPtr<PopupBaseView>(view.get());
            EXPECT_GT(Bindings(*model), before);
            // Some are seen, and hear of the properties' values; the others go before.
            if (i % 100 == 0) window.Add(view, {0, 0, 340, 392});
            window.Container().ChildRemoveAll();
        }
        EXPECT_EQ(last.Lock(), nullptr);
        EXPECT_EQ(Bindings(*model), before);
        RunEvents();
        EXPECT_EQ(QApplication::allWidgets().size(), widgets);
    }
}

}  // namespace
}  // namespace quillomoxui::view
