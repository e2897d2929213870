#pragma once

#include <string>

#include "moxcore/utility/Guid.h"
#include "quillocommon/Export.h"

namespace quillo {

// The entries of the datastore's lists. Entries are immutable; a change produces a new entry. Names
// are UTF-8. Any thread.

/// The signed-in user.
class QUILLOSERVICES_API QuilloUser {
public:
    virtual ~QuilloUser();
    [[nodiscard]] virtual moxcore::utility::Guid const& GetID() const = 0;
    [[nodiscard]] virtual std::string const& GetName() const = 0;
};

class QUILLOSERVICES_API QuilloAccount {
public:
    virtual ~QuilloAccount();
    [[nodiscard]] virtual moxcore::utility::Guid const& GetID() const = 0;
    [[nodiscard]] virtual std::string const& GetName() const = 0;
};

/// A team; the service calls it a workspace.
class QUILLOSERVICES_API QuilloTeam {
public:
    virtual ~QuilloTeam();
    [[nodiscard]] virtual moxcore::utility::Guid const& GetID() const = 0;
    [[nodiscard]] virtual std::string const& GetName() const = 0;
};

class QUILLOSERVICES_API QuilloProject {
public:
    virtual ~QuilloProject();
    [[nodiscard]] virtual moxcore::utility::Guid const& GetID() const = 0;
    [[nodiscard]] virtual std::string const& GetName() const = 0;

    /// Of the project's root folder.
    [[nodiscard]] virtual moxcore::utility::Guid const& GetRootAssetID() const = 0;
};

/// An entry of a folder.
class QUILLOSERVICES_API QuilloAsset {
public:
    // The types there are; others may come.
    static constexpr char kFolder[] = "folder";
    static constexpr char kFile[] = "file";
    static constexpr char kVersionStack[] = "version_stack";

    virtual ~QuilloAsset();
    [[nodiscard]] virtual moxcore::utility::Guid const& GetID() const = 0;
    [[nodiscard]] virtual std::string const& GetName() const = 0;
    [[nodiscard]] virtual std::string const& GetType() const = 0;
};

}  // namespace quillo
