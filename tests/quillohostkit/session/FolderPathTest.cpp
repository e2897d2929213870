#include "quillohostkit/session/FolderPath.h"

#include <gtest/gtest.h>

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloWorkspace.h"

namespace quillohostkit {
namespace {

using moxcore::utility::Guid;

template <class Node>
std::shared_ptr<Node> Make(std::string const& name,
                           std::shared_ptr<quillomoxui::QuilloNode> const& parent) {
    auto const node = std::make_shared<Node>(parent);
    node->SetInitialIdentity(Guid::CreateUnique(), moxcore::string::UTF8to16(name));
    return node;
}

TEST(FolderPath, GoesFromTheAccountDownWithoutTheRootFolder) {
    auto const user = std::make_shared<quillomoxui::QuilloUser>();
    auto const account = Make<quillomoxui::QuilloAccount>("Acme", user);
    auto const workspace = Make<quillomoxui::QuilloWorkspace>("Films", account);
    auto const project = Make<quillomoxui::QuilloProject>("Spring", workspace);
    auto const root = Make<quillomoxui::QuilloFolder>("root", project);
    auto const folder = Make<quillomoxui::QuilloFolder>("A/B", root);
    struct {
        std::shared_ptr<quillomoxui::QuilloFolder> folder;
        IDPath idPath;
        std::string namePath;
    } const cases[] = {
        {nullptr, {}, ""},
        {root, {account->GetID(), workspace->GetID(), project->GetID()}, "Acme/Films/Spring"},
        {folder,
         {account->GetID(), workspace->GetID(), project->GetID(), folder->GetID()},
         "Acme/Films/Spring/A\\/B"},
    };
    for (auto const& one : cases) {
        EXPECT_EQ(IDPathOf(one.folder), one.idPath);
        EXPECT_EQ(JoinNamePath(NamePathOf(one.folder)), one.namePath);
    }
}

}  // namespace
}  // namespace quillohostkit
