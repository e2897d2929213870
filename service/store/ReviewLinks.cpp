#include "service/store/ReviewLinks.h"

#include "service/base/ApiError.h"
#include "service/base/Uuid.h"
#include "service/store/Idempotency.h"
#include "service/store/Nodes.h"
#include "service/store/Store.h"

namespace quilloservice {

namespace {

/// The asset to store in a link for `asset`: a version's stack, or the asset itself.
AssetId LinkedAsset(Database& database, UserId const& user, AssetId const& asset) {
    std::optional<Node> node = FindNode(database, asset);
    if (!node || (node->kind != kind::kFile && node->kind != kind::kVersionStack)) {
        throw ApiError::NotFound("No file or version stack has the ID \"" +
                                 (asset.IsNil() ? "..." : asset.GetText()) +
                                 "\"; nothing was added.");
    }
    RequireMember(database, user, *node);
    if (node->kind == kind::kFile) {
        std::optional<Node> parent = FindNode(database, *node->parent);
        if (parent && parent->kind == kind::kVersionStack) return AssetId(parent->id);
    }
    return asset;
}

std::vector<MovieVersion> VersionsOf(Database& database, AssetId const& asset) {
    Statement row = database.Query(
        "SELECT id, name, version, bytes, sha256, media_type, published_at "
        "FROM nodes JOIN movies ON movies.asset = nodes.id "
        "WHERE id = ? OR parent = ? ORDER BY version DESC",
        asset, asset);
    std::vector<MovieVersion> versions;
    while (row.Next()) {
        versions.push_back({row.Id<FileId>(0), row.Text(1), row.Integer(2), row.Integer(3),
                            row.Text(4), row.Text(5), row.Integer(6)});
    }
    return versions;
}

Node InsertLink(Database& database, Node const& project, std::string const& name) {
    Node link{NodeId(NewUuid()), std::string(kind::kReviewLink), project.account, project.id, name};
    InsertNode(database, link);
    return link;
}

}  // namespace

Node ReviewLinks::Create(UserId const& user, ProjectId const& project, std::string const& name,
                         std::optional<IdempotencyKey> const& key) {
    return store.Write([&](Database& database) {
        if (!key) return InsertLink(database, RequireNode(database, user, project), name);
        std::int64_t now = clock();
        IdempotentRequest request{user, *key, "review link " + project.GetText() + " " + name};
        if (auto earlier = FindRepeated<LinkId>(database, request, now)) {
            return RequireNode(database, user, *earlier);
        }
        Node link = InsertLink(database, RequireNode(database, user, project), name);
        RememberResult(database, request, link.id, now);
        return link;
    });
}

std::int64_t ReviewLinks::AddAssets(UserId const& user, LinkId const& link,
                                    std::vector<AssetId> const& assets) {
    return store.Write([&](Database& database) {
        RequireNode(database, user, link);
        std::int64_t added = 0;
        for (AssetId const& asset : assets) {
            added += database.Run(
                "INSERT INTO link_assets (link, asset) VALUES (?, ?) ON CONFLICT DO NOTHING", link,
                LinkedAsset(database, user, asset));
        }
        return added;
    });
}

std::optional<ReviewContent> ReviewLinks::Find(LinkId const& link) const {
    return store.Read([&](Database& database) -> std::optional<ReviewContent> {
        std::optional<Node> node = FindNode(database, link);
        if (!node || node->kind != kind::kReviewLink) return std::nullopt;
        ReviewContent content{link, node->name, {}};
        Statement row =
            database.Query("SELECT asset FROM link_assets WHERE link = ? ORDER BY seq", link);
        while (row.Next()) {
            auto versions = VersionsOf(database, row.Id<AssetId>(0));
            if (!versions.empty()) content.movies.push_back(std::move(versions));
        }
        return content;
    });
}

}  // namespace quilloservice
