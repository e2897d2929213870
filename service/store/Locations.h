#pragma once

#include <string>

#include "service/store/Nodes.h"

namespace quilloservice {

class ChangeFeed;
class Store;

/// An account, workspace, project or folder.
struct Location {
    Node node;
    std::optional<Node> root;  ///< a project's root folder
};

/// Creates, renames and removes locations, and records the change of their list. Every function
/// throws ApiError: 404 if the location does not exist, 403 if `user` is not a member of its
/// account, 409 if the change would lose something. Any thread.
class Locations {
public:
    Locations(Store& store, ChangeFeed& changes) : store(store), changes(changes) {}

    /// Creates an account with `user` as its only member.
    Location AddAccount(UserId const& user, std::string const& name);

    /// Creates a child of `parent`: a workspace in an account, a project (with its root folder) in
    /// a workspace, a folder in a folder.
    Location Add(UserId const& user, NodeRef const& parent, std::string const& name);

    /// Renames a location; a project's root folder takes the project's name. 409 for a root folder.
    Location Rename(UserId const& user, NodeRef const& location, std::string const& name);

    /// Removes a location. 409 unless it is empty and no upload into it is unfinished.
    void Remove(UserId const& user, NodeRef const& location);

private:
    Store& store;
    ChangeFeed& changes;
};

}  // namespace quilloservice
