#include "service/store/ReviewLinks.h"

#include "service/base/ApiError.h"
#include "service/base/Uuid.h"
#include "service/store/Idempotency.h"
#include "service/store/Nodes.h"
#include "service/store/Store.h"

namespace quilloservice {

namespace {

/// What stands in the link for `asset`: the version stack that it is a version of, or itself.
std::string LinkedAsset(Database& database, std::string const& user, std::string const& asset) {
    std::optional<Node> node = FindNode(database, asset);
    if (!node || (node->kind != kind::File && node->kind != kind::VersionStack)) {
        throw ApiError::NotFound("No file or version stack has the ID \"" +
                                 (IsUuid(asset) ? asset : "...") + "\"; nothing was added.");
    }
    RequireMember(database, user, *node);
    if (node->kind == kind::File) {
        std::optional<Node> parent = FindNode(database, *node->parent);
        if (parent && parent->kind == kind::VersionStack) return parent->id;
    }
    return node->id;
}

std::vector<MovieVersion> VersionsOf(Database& database, std::string const& asset) {
    Statement row = database.Query(
        "SELECT id, name, version, bytes, sha256, media_type, published_at "
        "FROM nodes JOIN movies ON movies.asset = nodes.id "
        "WHERE id = ? OR parent = ? ORDER BY version DESC",
        asset, asset);
    std::vector<MovieVersion> versions;
    while (row.Next()) {
        versions.push_back({row.Text(0), row.Text(1), row.Integer(2), row.Integer(3), row.Text(4),
                            row.Text(5), row.Integer(6)});
    }
    return versions;
}

}  // namespace

Node ReviewLinks::Create(std::string const& user, std::string const& project,
                         std::string const& name,
                         std::optional<std::string> const& idempotencyKey) {
    return store.Write([&](Database& database) {
        std::int64_t now = clock();
        IdempotentRequest repeatable{user, idempotencyKey.value_or(""),
                                     "review link " + project + " " + name};
        if (idempotencyKey) {
            if (auto earlier = FindRepeated(database, repeatable, now)) {
                return RequireNode(database, user, *earlier, kind::ReviewLink);
            }
        }
        Node parent = RequireNode(database, user, project, kind::Project);
        Node link{NewUuid(), std::string(kind::ReviewLink), parent.account, parent.id, name};
        InsertNode(database, link);
        if (idempotencyKey) RememberResult(database, repeatable, link.id, now);
        return link;
    });
}

std::int64_t ReviewLinks::AddAssets(std::string const& user, std::string const& link,
                                    std::vector<std::string> const& assets) {
    return store.Write([&](Database& database) {
        RequireNode(database, user, link, kind::ReviewLink);
        std::int64_t added = 0;
        for (std::string const& asset : assets) {
            added += database.Run("INSERT OR IGNORE INTO link_assets (link, asset) VALUES (?, ?)",
                                  link, LinkedAsset(database, user, asset));
        }
        return added;
    });
}

std::optional<ReviewContent> ReviewLinks::Find(std::string const& link) const {
    return store.Read([&](Database& database) -> std::optional<ReviewContent> {
        std::optional<Node> node = FindNode(database, link);
        if (!node || node->kind != kind::ReviewLink) return std::nullopt;
        ReviewContent content{node->id, node->name, {}};
        Statement row =
            database.Query("SELECT asset FROM link_assets WHERE link = ? ORDER BY seq", link);
        while (row.Next()) {
            auto versions = VersionsOf(database, row.Text(0));
            if (!versions.empty()) content.movies.push_back(std::move(versions));
        }
        return content;
    });
}

}  // namespace quilloservice
