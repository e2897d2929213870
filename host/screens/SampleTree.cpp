#include "host/screens/SampleTree.h"

#include <initializer_list>
#include <string>

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloWorkspace.h"

namespace quilloscreens {

using namespace quillomoxui;

namespace {

template <class Node>
std::shared_ptr<Node> Make(std::shared_ptr<QuilloNode> const& parent, std::string const& name) {
    auto node = std::make_shared<Node>(parent);
    node->SetID(moxcore::utility::Guid::CreateUnique());
    node->SetName(moxcore::string::UTF8to16(name));
    node->SetFetchChildrenState(FetchChildrenState::Fetched);
    return node;
}

std::shared_ptr<QuilloFolder> MakeFolder(std::shared_ptr<QuilloNode> const& parent,
                                         std::string const& name,
                                         std::initializer_list<char const*> children) {
    auto folder = Make<QuilloFolder>(parent, name);
    NodeVector<QuilloFolder> folders;
    for (char const* const child : children)
        folders.push_back(Make<QuilloFolder>(folder, child));
    folder->SetFolders(folders);
    return folder;
}

std::shared_ptr<QuilloProject> MakeProject(std::shared_ptr<QuilloNode> const& workspace,
                                           std::string const& name) {
    auto project = Make<QuilloProject>(workspace, name);
    auto const root = MakeFolder(project, "root", {});
    root->SetFolders({MakeFolder(root, "Dailies", {"Day 1", "Day 2", "Day 10"}),
                      MakeFolder(root, "Cuts", {"Director's cut", "Trailer"}),
                      MakeFolder(root, "Music", {})});
    project->SetRootFolder(root);
    return project;
}

std::shared_ptr<QuilloWorkspace> MakeWorkspace(std::shared_ptr<QuilloNode> const& account,
                                               std::string const& name,
                                               std::initializer_list<char const*> projects) {
    auto workspace = Make<QuilloWorkspace>(account, name);
    NodeVector<QuilloProject> made;
    for (char const* const project : projects)
        made.push_back(MakeProject(workspace, project));
    workspace->SetProjects(made);
    return workspace;
}

}  // namespace

SampleTree::SampleTree() : user(std::make_shared<QuilloUser>()) {
    user->SetID(moxcore::utility::Guid::CreateUnique());
    user->SetName(moxcore::string::AsciiToUTF16("Ada Reviewer"));
    auto const north = Make<QuilloAccount>(user, "Northlight Pictures");
    auto const harbour = Make<QuilloAccount>(user, "Harbour Street Studio");
    auto const series = MakeWorkspace(north, "Series", {"The Long Way", "Pilot", "Winter special"});
    north->SetWorkspaces({series, MakeWorkspace(north, "Features", {"Saltwater"})});
    harbour->SetWorkspaces({MakeWorkspace(harbour, "Commercials", {"Spring campaign"})});
    user->SetAccounts({north, harbour});
    user->SetProposedAccount(north);
    folder = series->GetProjects().front()->GetRootFolder()->GetFolders().back();
}

}  // namespace quilloscreens
