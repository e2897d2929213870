#pragma once

#include <cstddef>
#include <mutex>
#include <shared_mutex>
#include <utility>
#include <vector>

#include "moxcore/classref/InterfaceRef.h"
#include "quilloclient/QuilloEntries.h"

namespace quillo {

/// A list of the datastore's, in the service's order. It follows what the service says: walk it by
/// asking for the count before each entry. Any thread.
template <class Entry>
class QuilloList {
public:
    using Ref = moxcore::classref::InterfaceRef<Entry>;

    [[nodiscard]] std::size_t GetCount() const {
        std::shared_lock lock(mutex);
        return entries.size();
    }

    /// For the datastore: puts `newEntries` in place of what the list holds.
    void Replace(std::vector<Ref> newEntries) {
        std::lock_guard lock(mutex);
        entries.swap(newEntries);
    }

protected:
    /// None past the end.
    [[nodiscard]] Ref At(std::size_t index) const {
        std::shared_lock lock(mutex);
        return index < entries.size() ? entries[index] : Ref();
    }

private:
    mutable std::shared_mutex mutex;
    std::vector<Ref> entries;  // guarded by mutex
};

class QuilloAccountList : public QuilloList<QuilloAccount> {
public:
    /// None past the end.
    [[nodiscard]] Ref GetAccount(std::size_t index) const { return At(index); }
};

class QuilloTeamList : public QuilloList<QuilloTeam> {
public:
    /// None past the end.
    [[nodiscard]] Ref GetTeam(std::size_t index) const { return At(index); }
};

class QuilloProjectList : public QuilloList<QuilloProject> {
public:
    /// None past the end.
    [[nodiscard]] Ref GetProject(std::size_t index) const { return At(index); }
};

class QuilloAssetList : public QuilloList<QuilloAsset> {
public:
    /// None past the end.
    [[nodiscard]] Ref GetAsset(std::size_t index) const { return At(index); }
};

}  // namespace quillo
