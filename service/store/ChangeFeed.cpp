#include "service/store/ChangeFeed.h"

#include <stdexcept>

#include "service/store/Nodes.h"
#include "service/store/Store.h"

namespace quilloservice {

namespace {

constexpr std::int64_t kMaxChanges = 10'000;
constexpr std::int64_t kTrimEvery = 100;

std::string_view ListBelow(Node const& parent) {
    if (parent.kind == kind::kAccount) return "workspaces";
    if (parent.kind == kind::kWorkspace) return "projects";
    if (parent.kind == kind::kFolder) return "assets";
    throw std::logic_error("there is no list below a " + parent.kind);
}

std::int64_t LastNumber(Database& database) {
    Statement row = database.Query(database.GetDialect().lastChange);
    row.Next();
    return row.Integer(0);
}

/// Deletes the changes that are no longer kept after a change has been recorded by `insertion`, now
/// and then: the numbers of other transactions are not read, so that they do not collide with this
/// one.
void Trim(Database& database, Statement& insertion) {
    while (insertion.Next()) {
        std::int64_t number = insertion.Integer(0);
        if (number % kTrimEvery != 0) continue;
        database.Run("DELETE FROM changes WHERE seq <= ?", number - kMaxChanges);
    }
}

}  // namespace

void ChangeFeed::RecordAccounts(Database& database, AccountId const& account) {
    Statement insertion = database.Query(
        "INSERT INTO changes (list, audience) "
        "SELECT 'accounts', user FROM memberships WHERE account = ? RETURNING seq",
        account);
    Trim(database, insertion);
}

void ChangeFeed::RecordChildren(Database& database, Node const& parent) {
    Statement insertion = database.Query(
        "INSERT INTO changes (list, parent, audience) VALUES (?, ?, ?) RETURNING seq",
        ListBelow(parent), parent.id, parent.account);
    Trim(database, insertion);
}

ChangeNumber ChangeFeed::Position() const {
    return store.Read([](Database& database) { return ChangeNumber(LastNumber(database)); });
}

bool ChangeFeed::Reaches(ChangeNumber number) const {
    return store.Read([&](Database& database) {
        auto value = static_cast<std::int64_t>(number);
        std::int64_t last = LastNumber(database);
        Statement row = database.Query("SELECT coalesce(min(seq), ?) FROM changes", last + 1);
        row.Next();
        return value >= row.Integer(0) - 1 && value <= last;
    });
}

std::vector<Change> ChangeFeed::After(ChangeNumber number, UserId const& user,
                                      std::int64_t most) const {
    return store.Read([&](Database& database) {
        Statement row = database.Query(
            "SELECT seq, list, parent FROM changes WHERE seq > ? AND (audience = ? OR audience IN "
            "(SELECT account FROM memberships WHERE user = ?)) ORDER BY seq LIMIT ?",
            number, user, user, most);
        std::vector<Change> changes;
        while (row.Next()) {
            changes.push_back(
                {ChangeNumber(row.Integer(0)), row.Text(1), row.OptionalId<NodeId>(2)});
        }
        return changes;
    });
}

}  // namespace quilloservice
