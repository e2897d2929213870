#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "service/base/Clock.h"

namespace quilloservice {

class Database;
class Store;
struct Node;

/// One movie as reviewers see it.
struct MovieVersion {
    std::string asset;
    std::string name;
    std::int64_t version = 1;
    std::int64_t bytes = 0;
    std::string sha256;  ///< hex
    std::string mediaType;
    std::int64_t publishedAt = 0;  ///< seconds since 1970
};

/// What a reviewer finds behind a link: the movies in the order in which they were added, each with
/// its versions, newest first.
struct ReviewContent {
    std::string id;
    std::string name;
    std::vector<std::vector<MovieVersion>> movies;
};

/// Review links. Functions with a user throw ApiError; those without serve whoever has the link.
/// Any thread.
class ReviewLinks {
public:
    ReviewLinks(Store& store, Clock clock) : store(store), clock(std::move(clock)) {}

    /// Makes a link in a project, or finds the one that the same request with the same key made.
    Node Create(std::string const& user, std::string const& project, std::string const& name,
                std::optional<std::string> const& idempotencyKey);

    /// Adds files and version stacks; returns how many were not there before. All or none.
    std::int64_t AddAssets(std::string const& user, std::string const& link,
                           std::vector<std::string> const& assets);

    [[nodiscard]] std::optional<ReviewContent> Find(std::string const& link) const;

private:
    Store& store;
    Clock clock;
};

}  // namespace quilloservice
