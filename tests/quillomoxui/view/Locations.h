#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/QuilloWorkspace.h"

namespace quillomoxui {

/// A node with a name of its own and an ID that is the same for every node of that name: what a
/// backend makes when it fetches a list again.
template <class Node>
std::shared_ptr<Node> MakeNode(std::string const& name, std::shared_ptr<QuilloNode> const& parent) {
    std::shared_ptr<Node> node;
    node = std::make_shared<Node>(parent);
    node->SetInitialName(moxcore::string::UTF8to16(name));
    auto const hash = std::hash<std::string>()(name);
    char text[37];
    std::snprintf(text, sizeof text, "%08x-0000-4000-8000-%012zx",
                  static_cast<unsigned>(hash >> 32U), hash & 0xFFFFFFFFFFFFU);
    node->SetInitialID(moxcore::utility::Guid(text));
    return node;
}

/// A folder that counts how often it was asked for its children.
class CountingFolder : public QuilloFolder {
public:
    using QuilloFolder::QuilloFolder;
    void FetchChildren() override {
        ++fetches;
        QuilloFolder::FetchChildren();
    }
    int fetches = 0;
};

/// `parent`'s list of folders comes, with a new folder for each name.
inline NodeVector<QuilloFolder> Receive(std::shared_ptr<QuilloFolder> const& parent,
                                        std::vector<std::string> const& names) {
    NodeVector<QuilloFolder> folders;
    for (auto const& name : names)
        folders.push_back(MakeNode<CountingFolder>(name, parent));
    parent->SetFolders(folders);
    parent->SetFetchChildrenState(FetchChildrenState::Fetched);
    return folders;
}

/// A workspace's list of projects comes; each has a root folder.
inline NodeVector<QuilloProject> ReceiveProjects(std::shared_ptr<QuilloWorkspace> const& workspace,
                                                 std::vector<std::string> const& names) {
    NodeVector<QuilloProject> projects;
    for (auto const& name : names) {
        projects.push_back(MakeNode<QuilloProject>(name, workspace));
        projects.back()->SetRootFolder(
            MakeNode<CountingFolder>("root of " + name, projects.back()));
    }
    workspace->SetProjects(projects);
    return projects;
}

inline NodeVector<QuilloWorkspace> ReceiveWorkspaces(std::shared_ptr<QuilloAccount> const& account,
                                                     std::vector<std::string> const& names) {
    NodeVector<QuilloWorkspace> workspaces;
    for (auto const& name : names)
        workspaces.push_back(MakeNode<QuilloWorkspace>(name, account));
    account->SetWorkspaces(workspaces);
    return workspaces;
}

}  // namespace quillomoxui
