#include "service/store/SampleData.h"

#include <array>
#include <string_view>

#include "service/base/Uuid.h"
#include "service/store/Nodes.h"
#include "service/store/Store.h"

namespace quilloservice {

namespace {

/// Inserts nodes with IDs derived from their paths.
class SampleBuilder {
public:
    explicit SampleBuilder(Database& database) : database(database) {}

    void User(UserId const& id, std::string_view name) {
        database.Run("INSERT INTO users (id, name) VALUES (?, ?)", id, name);
    }

    Node Account(UserId const& user, std::string const& name) {
        AccountId id(UuidOf("account/" + name));
        Node account{id, std::string(kind::kAccount), id, std::nullopt, name};
        InsertNode(database, account);
        database.Run("INSERT INTO memberships (user, account) VALUES (?, ?)", user, id);
        return account;
    }

    Node Child(Node const& parent, std::string_view kind, std::string const& name,
               std::int64_t version = 1) {
        Node child{NodeId(UuidOf(parent.id.GetText() + "/" + name + "/" + std::to_string(version))),
                   std::string(kind),
                   parent.account,
                   parent.id,
                   name,
                   version};
        InsertNode(database, child);
        return child;
    }

    /// Adds a project and returns its root folder.
    Node Project(Node const& workspace, std::string const& name) {
        return Child(Child(workspace, kind::kProject, name), kind::kFolder, name);
    }

    void Stack(Node const& folder, std::string const& name, int versions) {
        Node stack = Child(folder, kind::kVersionStack, name);
        for (int version = 1; version <= versions; ++version) {
            Child(stack, kind::kFile, name, version);
        }
    }

private:
    Database& database;
};

void AddSmallSample(SampleBuilder& builder, UserId const& user) {
    Node studio = builder.Account(user, "Northlight Pictures");
    Node freelance = builder.Account(user, "Harbour Street Studio");

    Node features = builder.Child(studio, kind::kWorkspace, "Feature Films");
    Node river = builder.Project(features, "The Long River");
    Node editorial = builder.Child(river, kind::kFolder, "Editorial");
    Node reels = builder.Child(editorial, kind::kFolder, "Reels");
    for (int reel = 1; reel <= 10; ++reel) {
        builder.Child(reels, kind::kFolder, "Reel " + std::to_string(reel));
    }
    builder.Stack(editorial, "Long River rough cut.mp4", 3);
    builder.Child(editorial, kind::kFolder, "Temp music");
    Node vfx = builder.Child(river, kind::kFolder, "VFX");
    for (int shot : {2, 10, 21}) {
        Node folder = builder.Child(vfx, kind::kFolder, "Shot " + std::to_string(shot));
        builder.Child(folder, kind::kFolder, "Plates");
        builder.Child(folder, kind::kFolder, "Comps");
    }
    Node deliverables = builder.Child(river, kind::kFolder, "Deliverables");
    builder.Child(deliverables, kind::kFile, "Festival screener.mov");
    builder.Project(features, "Paper Lanterns");
    Node winter = builder.Project(features, "Winter Light");
    builder.Child(builder.Child(winter, kind::kFolder, "Dailies"), kind::kFolder, "Day 01");

    Node commercials = builder.Child(studio, kind::kWorkspace, "Commercials");
    Node coffee = builder.Project(commercials, "Coffee Roasters 30s");
    builder.Stack(coffee, "Roasters 30s.mp4", 2);
    builder.Child(coffee, kind::kFolder, "Client feedback");
    builder.Project(commercials, "City Bikes Launch");
    builder.Project(commercials, "Museum Night");

    Node documentaries = builder.Child(freelance, kind::kWorkspace, "Documentaries");
    Node keepers = builder.Project(documentaries, "Lighthouse Keepers");
    Node interviews = builder.Child(keepers, kind::kFolder, "Interviews");
    builder.Child(interviews, kind::kFolder, "Marta");
    builder.Child(interviews, kind::kFolder, "Henrik");
    builder.Child(keepers, kind::kFile, "Teaser.mp4");
    builder.Project(documentaries, "Salt and Stone");
}

/// Names that are hard to sort, shorten and draw: mixed case, numbers, left-to-right and
/// right-to-left scripts, emoji, and some wider than any window.
std::string LargeName(std::string_view word, int index) {
    static constexpr std::array<std::string_view, 10> kKinds = {
        "Shot ",   "shot ",   "REEL ", "Scène ", "撮影素材 ",
        "Монтаж ", "편집본 ", "مشهد ", "סצנה ",  "🎬 Dailies "};
    std::string number = std::to_string(index);
    if (index % 97 == 0) {
        std::string name = std::string(word) + " " + number + " ";
        while (name.size() < 200)
            name += "and another take ";
        return name.substr(0, 200);
    }
    return std::string(kKinds[static_cast<std::size_t>(index * 7 % 10)]) + std::string(word) + " " +
           number;
}

void AddLargeSample(SampleBuilder& builder, UserId const& user) {
    constexpr int kWorkspaces = 40;
    constexpr int kProjects = 2000;
    constexpr int kFolders = 20'000;
    // As in real accounts, one workspace and one folder are much larger than the others.
    constexpr int kProjectsOfFirst = 400;
    constexpr int kFoldersOfFirst = 3000;

    std::array<Node, 3> accounts = {builder.Account(user, "Northlight Pictures"),
                                    builder.Account(user, "Harbour Street Studio"),
                                    builder.Account(user, "スタジオ北極星")};
    int project = 0;
    int folder = 0;
    for (int workspace = 0; workspace < kWorkspaces; ++workspace) {
        Node const& account = accounts[static_cast<std::size_t>(workspace) % accounts.size()];
        Node workspaceNode =
            builder.Child(account, kind::kWorkspace, LargeName("workspace", workspace + 1));
        int projectsUpTo = kProjectsOfFirst + (kProjects - kProjectsOfFirst) * workspace / 39;
        for (; project < projectsUpTo; ++project) {
            Node root = builder.Project(workspaceNode, LargeName("project", project + 1));
            int foldersUpTo =
                kFoldersOfFirst + (kFolders - kFoldersOfFirst) * project / (kProjects - 1);
            // Every third folder is a child of the one before it, so that trees are also deep.
            Node last = root;
            for (; folder < foldersUpTo; ++folder) {
                Node const& parent = project > 0 && folder % 3 == 0 ? last : root;
                last = builder.Child(parent, kind::kFolder, LargeName("folder", folder + 1));
            }
        }
    }
}

}  // namespace

UserId SampleUserId() {
    return UserId(UuidOf("user/local"));
}

void MakeSampleData(Store& store, SampleSize size) {
    store.Write([&](Database& database) {
        if (database.Query("SELECT 1 FROM users").Next()) return;
        SampleBuilder builder(database);
        builder.User(SampleUserId(), "Robin Ellery");
        if (size == SampleSize::None) return;

        UserId other(UuidOf("user/other"));
        builder.User(other, "Alex Moreau");
        Node strangers = builder.Account(other, "Somebody Else's Account");
        Node workspace = builder.Child(strangers, kind::kWorkspace, "Private");
        builder.Stack(builder.Project(workspace, "Closed Set"), "Closed Set.mp4", 1);

        if (size == SampleSize::Small) AddSmallSample(builder, SampleUserId());
        if (size == SampleSize::Large) AddLargeSample(builder, SampleUserId());
    });
}

}  // namespace quilloservice
