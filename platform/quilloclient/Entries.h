#pragma once

#include <string>

#include "moxcore/utility/Guid.h"
#include "quilloclient/QuilloEntries.h"
#include "quillosdk/Records.h"

namespace quillo {

// The entries as they are made of the service's records.

/// The part that all entries share.
template <class Interface>
class NamedEntry : public Interface {
public:
    template <class Record>
    explicit NamedEntry(Record const& record) : id(ToGuid(record.id)), name(record.name) {}

    [[nodiscard]] moxcore::utility::Guid const& GetID() const override { return id; }
    [[nodiscard]] std::string const& GetName() const override { return name; }

    friend bool operator==(NamedEntry const& left, NamedEntry const& right) {
        return left.id == right.id && left.name == right.name;
    }

protected:
    [[nodiscard]] static moxcore::utility::Guid ToGuid(
        std::optional<quillocommon::Guid> const& id) {
        return moxcore::utility::Guid(id.value_or(quillocommon::Guid()).AsString());
    }

private:
    moxcore::utility::Guid const id;
    std::string const name;
};

using UserEntry = NamedEntry<QuilloUser>;
using AccountEntry = NamedEntry<QuilloAccount>;
using TeamEntry = NamedEntry<QuilloTeam>;

class ProjectEntry final : public NamedEntry<QuilloProject> {
public:
    explicit ProjectEntry(quillosdk::Project const& record)
        : NamedEntry(record), root(ToGuid(record.rootAsset.id)) {}

    [[nodiscard]] moxcore::utility::Guid const& GetRootAssetID() const override { return root; }

    friend bool operator==(ProjectEntry const& left, ProjectEntry const& right) {
        return static_cast<NamedEntry const&>(left) == right && left.root == right.root;
    }

private:
    moxcore::utility::Guid const root;
};

class AssetEntry final : public NamedEntry<QuilloAsset> {
public:
    explicit AssetEntry(quillosdk::Asset const& record) : NamedEntry(record), type(record.type) {}

    [[nodiscard]] std::string const& GetType() const override { return type; }

    friend bool operator==(AssetEntry const& left, AssetEntry const& right) {
        return static_cast<NamedEntry const&>(left) == right && left.type == right.type;
    }

private:
    std::string const type;
};

}  // namespace quillo
