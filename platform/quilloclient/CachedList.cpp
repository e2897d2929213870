#include "quilloclient/CachedList.h"

#include <utility>

#include "quilloclient/Entries.h"
#include "quillosdk/AnswerReader.h"

namespace quillo {
namespace {

using quillocommon::Step;

/// How one kind of list is fetched.
struct KindRule {
    char const* pathBefore;  // the parent's ID
    char const* pathAfter;   // it
    char const* task;
};

KindRule const& RuleOf(ListKind kind) {
    static constexpr KindRule kAccounts{"/v1/accounts", "", "read the accounts"};
    static constexpr KindRule kTeams{"/v1/accounts/", "/workspaces",
                                     "read the workspaces of an account"};
    static constexpr KindRule kProjects{"/v1/workspaces/", "/projects",
                                        "read the projects of a workspace"};
    static constexpr KindRule kAssets{"/v1/folders/", "/children", "read what lies in a folder"};
    switch (kind) {
        case ListKind::Accounts:
            return kAccounts;
        case ListKind::Teams:
            return kTeams;
        case ListKind::Projects:
            return kProjects;
        case ListKind::Assets:
            break;
    }
    return kAssets;
}

/// A list whose entries are made of the records that `read` finds in an answer.
template <class List, class Entry, class Record>
class ReadList final : public CachedListOf<List> {
public:
    using Reader = std::vector<Record> (*)(std::string&);
    explicit ReadList(Reader read) : read(read) {}

    bool Take(std::string& body) override {
        std::vector<std::shared_ptr<Entry>> fresh;
        for (auto const& record : read(body))
            fresh.push_back(std::make_shared<Entry>(record));
        bool const same =
            std::equal(fresh.begin(), fresh.end(), known.begin(), known.end(),
                       [](auto const& left, auto const& right) { return *left == *right; });
        if (same) return false;
        std::vector<typename List::Ref> refs;
        refs.reserve(fresh.size());
        for (auto const& entry : fresh)
            refs.emplace_back(entry);
        this->list->Replace(std::move(refs));
        known.swap(fresh);
        return true;
    }

private:
    Reader const read;
    std::vector<std::shared_ptr<Entry>> known;  // what the list holds
};

}  // namespace

CachedList::~CachedList() = default;

std::unique_ptr<CachedList> CachedList::Create(ListKind kind) {
    using namespace quillosdk;
    switch (kind) {
        case ListKind::Accounts:
            return std::make_unique<ReadList<QuilloAccountList, AccountEntry, Account>>(
                &ReadAccounts);
        case ListKind::Teams:
            return std::make_unique<ReadList<QuilloTeamList, TeamEntry, Workspace>>(
                &ReadWorkspaces);
        case ListKind::Projects:
            return std::make_unique<ReadList<QuilloProjectList, ProjectEntry, Project>>(
                &ReadProjects);
        case ListKind::Assets:
            break;
    }
    return std::make_unique<ReadList<QuilloAssetList, AssetEntry, Asset>>(&ReadAssets);
}

std::string PathOf(ListKind kind, moxcore::utility::Guid const& parent) {
    auto const& rule = RuleOf(kind);
    return rule.pathBefore + (parent.IsNull() ? std::string() : parent.AsStdString()) +
           rule.pathAfter;
}

quillosdk::Task TaskOf(ListKind kind) {
    return {Step::ReadLocations, RuleOf(kind).task};
}

}  // namespace quillo
