#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloFile.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/QuilloVersionStack.h"
#include "quillomoxui/model/QuilloWorkspace.h"
#include "tests/support/DrainMainThread.h"

namespace quillomoxui {
namespace {

using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;
using testing::ElementsAre;
using testsupport::DrainMainThread;

template <class Node>
std::shared_ptr<Node> Make(std::string const& name,
                           std::shared_ptr<QuilloNode> const& parent = nullptr) {
    auto node = std::make_shared<Node>(parent);
    node->SetInitialName(UTF8to16(name));
    return node;
}

std::vector<std::string> Names(NodeVector<QuilloNode> const& nodes) {
    std::vector<std::string> names;
    for (auto const& node : nodes)
        names.push_back(UTF16to8(node->GetName()));
    return names;
}

/// Counts how often its children are asked for.
template <class Base>
struct Counting : Base {
    using Base::Base;
    void FetchChildren() override { ++fetches; }
    int fetches = 0;
};

/// Jane - Studio - Promos - Spring spot - (root) - A - B, and beside it what the cases need.
struct Tree {
    std::shared_ptr<QuilloUser> user = std::make_shared<QuilloUser>();
    std::shared_ptr<QuilloAccount> account = Make<QuilloAccount>("Studio", user);
    std::shared_ptr<QuilloWorkspace> workspace = Make<QuilloWorkspace>("Promos", account);
    std::shared_ptr<QuilloProject> project = Make<QuilloProject>("Spring spot", workspace);
    std::shared_ptr<QuilloFolder> root = Make<QuilloFolder>("root", project);
    std::shared_ptr<QuilloFolder> a = Make<QuilloFolder>("A", root);
    std::shared_ptr<QuilloFolder> b = Make<QuilloFolder>("B", a);

    Tree() {
        user->SetAccounts({account});
        account->SetWorkspaces({workspace});
        workspace->SetProjects({project});
        project->SetRootFolder(root);
        root->SetFolders({a});
        a->SetFolders({b});
    }
};

TEST(NodeTree, ChildrenStandInNaturalOrderWhateverTheCase) {
    auto const folder = Make<QuilloFolder>("f");
    folder->SetFolders({Make<QuilloFolder>("shot 10"), Make<QuilloFolder>("Shot 9"),
                        Make<QuilloFolder>("Shot 1"), Make<QuilloFolder>("")});
    folder->SetFiles({Make<QuilloFile>("take 2"), Make<QuilloFile>("Take 1")});
    folder->SetVersionStacks(
        {Make<QuilloVersionStack>("cut b"), Make<QuilloVersionStack>("Cut A")});
    EXPECT_THAT(Names(folder->GetChildNodes()), ElementsAre("Take 1", "take 2", "Cut A", "cut b",
                                                            "", "Shot 1", "Shot 9", "shot 10"));
}

TEST(NodeTree, UpperSettersFetchEveryElementAtEveryCallFoldersNone) {
    auto const user = std::make_shared<QuilloUser>();
    auto const one = std::make_shared<Counting<QuilloAccount>>(user);
    auto const two = std::make_shared<Counting<QuilloAccount>>(user);
    int deliveries = 0;
    auto const handle =
        user->AccountsNotifyingPropertyHost::BindValueChanged([&](auto const&) { ++deliveries; });
    DrainMainThread();
    deliveries = 0;
    user->SetAccounts({one, two});
    user->SetAccounts(user->GetAccounts());
    DrainMainThread();
    EXPECT_EQ(deliveries, 1);
    EXPECT_EQ(one->fetches, 2);
    EXPECT_EQ(two->fetches, 2);

    auto const workspace = std::make_shared<Counting<QuilloWorkspace>>(nullptr);
    Make<QuilloAccount>("a")->SetWorkspaces({workspace});
    EXPECT_EQ(workspace->fetches, 1);
    auto const project = std::make_shared<Counting<QuilloProject>>(nullptr);
    Make<QuilloWorkspace>("w")->SetProjects({project});
    EXPECT_EQ(project->fetches, 1);

    auto const folder = std::make_shared<Counting<QuilloFolder>>(nullptr);
    Make<QuilloProject>("p")->SetRootFolder(folder);
    Make<QuilloFolder>("f")->SetFolders({folder});
    EXPECT_EQ(folder->fetches, 0);
}

/// Notes its own name and how many siblings its parent lists when its children are asked for.
struct Noting : QuilloProject {
    Noting(std::shared_ptr<QuilloWorkspace> const& parent, std::vector<std::string>& log)
        : QuilloProject(parent), workspace(parent), log(log) {}
    void FetchChildren() override {
        log.push_back(UTF16to8(GetName()) + std::to_string(workspace.lock()->GetProjects().size()));
    }
    std::weak_ptr<QuilloWorkspace> workspace;
    std::vector<std::string>& log;
};

TEST(NodeTree, ChildrenAreAskedInTheOrderGivenOnceTheyAreListed) {
    std::vector<std::string> log;
    auto const workspace = Make<QuilloWorkspace>("w");
    NodeVector<QuilloProject> projects;
    for (auto const* const name : {"b", "a", "c"}) {
        projects.push_back(std::make_shared<Noting>(workspace, log));
        projects.back()->SetInitialName(UTF8to16(name));
    }
    workspace->SetProjects(projects);
    EXPECT_THAT(log, ElementsAre("b3", "a3", "c3"));
    DrainMainThread();
}

TEST(NodeTree, SettersHoldTheirRulesThroughTheHostsInterface) {
    auto const folder = Make<QuilloFolder>("f");
    FoldersNotifyingPropertyHost& host = *folder;
    host.SetFolders({Make<QuilloFolder>("b"), Make<QuilloFolder>("A")});
    EXPECT_THAT(Names(folder->GetChildNodes()), ElementsAre("A", "b"));
}

TEST(NodeTree, NullRootFolderBreaksTheContractUnlessItIsInitial) {
    auto const project = Make<QuilloProject>("p");
    EXPECT_TRUE(project->GetChildNodes().empty());
    try {
        project->SetRootFolder(nullptr);
        FAIL() << "accepted a null root folder";
    } catch (moxcore::config::ContractViolation const& violation) {
        EXPECT_STREQ(violation.what(),
                     "Contract violation: RootFolder property may not be set to null.");
    }
    auto const root = Make<QuilloFolder>("r", project);
    project->SetRootFolder(root);
    EXPECT_THAT(project->GetChildNodes(), ElementsAre(root));
    project->SetInitialRootFolder(nullptr);
    EXPECT_TRUE(project->GetChildNodes().empty());
}

TEST(NodeTree, FetchingIsAskedOfContainersAndDoneForLeaves) {
    auto const state = [](std::shared_ptr<QuilloNode> const& node) {
        node->FetchChildren();
        return node->GetFetchChildrenState();
    };
    EXPECT_EQ(state(std::make_shared<QuilloUser>()), FetchChildrenState::Fetching);
    EXPECT_EQ(state(Make<QuilloWorkspace>("")), FetchChildrenState::Fetching);
    EXPECT_EQ(state(Make<QuilloFile>("")), FetchChildrenState::Fetched);
    EXPECT_EQ(state(Make<QuilloVersionStack>("")), FetchChildrenState::Fetched);
}

TEST(NodeTree, TheKindNamesTheClassAndItsTexts) {
    Tree const tree;
    struct {
        std::shared_ptr<QuilloNode> node;
        std::string abbreviation, name;
    } const cases[] = {
        {std::make_shared<Counting<QuilloUser>>(), "User", "user"},
        {std::make_shared<Counting<QuilloAccount>>(nullptr), "Acct", "account"},
        {tree.workspace, "Wksp", "workspace"},
        {tree.project, "Proj", "project"},
        {tree.a, "Fold", "folder"},
        {Make<QuilloFile>("f"), "File", "file"},
        {Make<QuilloVersionStack>("v"), "Vers", "version_stack"},
    };
    for (auto const& [node, abbreviation, name] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(UTF16to8(node->GetTypeAbbreviation()), abbreviation);
        EXPECT_EQ(TextsOf(node->GetKind()).name, name);
        EXPECT_EQ(NodeAs<QuilloUser>(node), std::dynamic_pointer_cast<QuilloUser>(node));
        EXPECT_EQ(NodeAs<QuilloAccount>(node), std::dynamic_pointer_cast<QuilloAccount>(node));
        EXPECT_EQ(NodeAs<QuilloWorkspace>(node), std::dynamic_pointer_cast<QuilloWorkspace>(node));
        EXPECT_EQ(NodeAs<QuilloProject>(node), std::dynamic_pointer_cast<QuilloProject>(node));
        EXPECT_EQ(NodeAs<QuilloFolder>(node), std::dynamic_pointer_cast<QuilloFolder>(node));
        EXPECT_EQ(NodeAs<QuilloFile>(node), std::dynamic_pointer_cast<QuilloFile>(node));
        EXPECT_EQ(NodeAs<QuilloVersionStack>(node),
                  std::dynamic_pointer_cast<QuilloVersionStack>(node));
    }
    EXPECT_EQ(NodeAs<QuilloUser>(nullptr), nullptr);
}

TEST(NodeTree, AncestorsAreFoundByType) {
    Tree const tree;
    struct {
        std::shared_ptr<QuilloNode> node;
        std::shared_ptr<QuilloProject> project;
        std::shared_ptr<QuilloAccount> account;
    } const cases[] = {
        {tree.b, tree.project, tree.account},
        {tree.project, tree.project, tree.account},
        {tree.account, nullptr, tree.account},
        {tree.user, nullptr, nullptr},
    };
    for (auto const& one : cases) {
        SCOPED_TRACE(UTF16to8(one.node->GetName()));
        EXPECT_EQ(one.node->FindSelfOrAncestorOfType<QuilloProject>(), one.project);
        EXPECT_EQ(tree.user->GetAccountFor(one.node), one.account);
    }
    EXPECT_EQ(tree.user->GetAccountFor(nullptr), nullptr);
    QuilloFolder onTheStack(nullptr);
    EXPECT_THROW(static_cast<void>(onTheStack.FindSelfOrAncestorOfType<QuilloProject>()),
                 std::bad_weak_ptr);
}

TEST(SelectionPath, StartsAtTheWorkspace) {
    Tree tree;
    auto const looseWorkspace = Make<QuilloWorkspace>("gone");
    auto orphan = Make<QuilloFolder>("orphan", Make<QuilloFolder>("released"));
    auto const rootless = Make<QuilloFolder>("f", Make<QuilloProject>("p", tree.workspace));
    auto const projectWithoutRoot = Make<QuilloProject>("No root", tree.workspace);
    auto const itsFolder = Make<QuilloFolder>("Loose", projectWithoutRoot);
    struct {
        char const* what;
        std::shared_ptr<QuilloNode> node;
        std::string path;
    } const cases[] = {
        {"nothing", nullptr, "/"},
        {"deep folder", tree.b, "Promos/Spring spot/A/B"},
        {"root folder", tree.root, "Promos/Spring spot"},
        {"project", tree.project, "Promos/Spring spot"},
        {"workspace", tree.workspace, "/"},
        {"account", tree.account, "/"},
        {"user", tree.user, "/"},
        {"parent released", orphan, "/"},
        {"project released", rootless, "/"},
        {"project without root folder", itsFolder, "Promos/No root/Loose"},
    };
    for (auto const& one : cases)
        EXPECT_EQ(UTF16to8(tree.user->ConstructSelectionPath(one.node)), one.path) << one.what;
}

TEST(SelectionPath, FollowsTheSelection) {
    Tree tree;
    std::vector<std::string> log;
    auto const selection = tree.user->SelectionNotifyingPropertyHost::BindValueChanged(
        [&](std::shared_ptr<QuilloFolder> const& folder) {
            log.push_back(folder ? UTF16to8(folder->GetName()) : "none");
        });
    auto const path = tree.user->SelectionPathNotifyingPropertyHost::BindValueChanged(
        [&](UTF16String const& text) { log.push_back(UTF16to8(text)); });
    DrainMainThread();
    log.clear();
    SelectionNotifyingPropertyHost& host = *tree.user;
    host.SetSelection(tree.a);
    host.SetSelection(nullptr);
    DrainMainThread();
    EXPECT_THAT(log, ElementsAre("A", "Promos/Spring spot/A", "none", "/"));
}

}  // namespace
}  // namespace quillomoxui
