#pragma once

#include <string>
#include <string_view>

#include "service/store/Nodes.h"

namespace quilloservice {

class ChangeFeed;
class Store;

/// A location to share to with what stands in its lists: an account, a workspace, a project or a
/// folder. `root` is a project's root folder.
struct Location {
    Node node;
    std::optional<Node> root;
};

/// Makes, renames and removes locations, and has the lists that change announced. Each throws
/// ApiError: 404 when there is no such location, 403 when `user` is no member of its account, 409
/// when what is asked for would lose something. Any thread.
class Locations {
public:
    Locations(Store& store, ChangeFeed& changes) : store(store), changes(changes) {}

    /// Makes an account with `user` as its one member.
    Location AddAccount(std::string const& user, std::string const& name);

    /// Makes a location of `kind` below `parent`; a project comes with its root folder.
    Location Add(std::string const& user, std::string_view kind, std::string const& parent,
                 std::string const& name);

    /// A root folder goes by its project's name, and is not renamed by itself.
    Location Rename(std::string const& user, std::string_view kind, std::string const& id,
                    std::string const& name);

    /// Removes a location that holds nothing and into which nothing is on its way.
    void Remove(std::string const& user, std::string_view kind, std::string const& id);

private:
    Store& store;
    ChangeFeed& changes;
};

}  // namespace quilloservice
