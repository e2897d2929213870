#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "service/base/Clock.h"
#include "service/store/Ids.h"

namespace quilloservice {

class Database;
class Store;
struct Node;

/// A movie, as shown to reviewers.
struct MovieVersion {
    FileId asset;
    std::string name;
    std::int64_t version = 1;
    std::int64_t bytes = 0;
    std::string sha256;  ///< hex
    std::string mediaType;
    std::int64_t publishedAt = 0;  ///< seconds since 1970
};

/// The contents of a review link: its movies in the order in which they were added, each with its
/// versions, newest first.
struct ReviewContent {
    LinkId id;
    std::string name;
    std::vector<std::vector<MovieVersion>> movies;
};

/// The store's review links. Functions that take a user throw ApiError. Any thread.
class ReviewLinks {
public:
    ReviewLinks(Store& store, Clock clock) : store(store), clock(std::move(clock)) {}

    /// Creates a link in a project, or returns the one created by an earlier request with the same
    /// key.
    Node Create(UserId const& user, ProjectId const& project, std::string const& name,
                std::optional<IdempotencyKey> const& key);

    /// Adds files and version stacks, all or none. Returns how many were not in the link before.
    std::int64_t AddAssets(UserId const& user, LinkId const& link,
                           std::vector<AssetId> const& assets);

    /// The link's contents, for anyone who knows its ID; nothing if there is no such link.
    [[nodiscard]] std::optional<ReviewContent> Find(LinkId const& link) const;

private:
    Store& store;
    Clock clock;
};

}  // namespace quilloservice
