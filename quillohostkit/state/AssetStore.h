#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "moxcore/utility/Guid.h"
#include "quillohostkit/Export.h"
#include "quillohostkit/state/ChosenLocation.h"
#include "quillohostkit/state/IDPath.h"

struct sqlite3;

namespace quillohostkit {

/// The host's records of the movies that it has shared, in an SQLite file that several processes
/// may use at once: the strings that the library stores with an asset, and what the host keeps for
/// itself. What belongs to a service is kept apart for each. Any thread; every operation throws a
/// Failure (Other) when the file cannot be read or written.
class QUILLOHOSTKIT_API AssetStore {
public:
    using Guid = moxcore::utility::Guid;

    /// The two Guids by which the library names an asset.
    struct Asset {
        Guid library;  ///< of this store
        Guid movie;
    };

    /// Opens `file`, made when it is missing. `service` names the service that the strings are for.
    AssetStore(std::filesystem::path const& file, std::string service);
    ~AssetStore();
    AssetStore(AssetStore const&) = delete;
    AssetStore& operator=(AssetStore const&) = delete;

    /// The asset that stands for the movie at `canonicalPath`, the same one each time.
    [[nodiscard]] Asset AssetOf(std::filesystem::path const& canonicalPath);

    /// A string stored with an asset.
    [[nodiscard]] std::optional<std::string> Read(Asset const& asset, std::string const& key);
    void Write(Asset const& asset, std::string const& key, std::string const& value);
    void Forget(Asset const& asset, std::string const& key);

    /// The folder that the asset was last shared to.
    [[nodiscard]] IDPath ReadIDPath(Asset const& asset);
    void WriteIDPath(Asset const& asset, IDPath const& path);

    /// Where movies go that were never shared, if the user has said so.
    [[nodiscard]] std::optional<ChosenLocation> ReadDefaultDestination();
    void WriteDefaultDestination(ChosenLocation const& location);
    void ForgetDefaultDestination();

    /// How many versions of a version stack have been shared.
    [[nodiscard]] std::int64_t CountVersions(Guid const& versionStack);
    /// Counts one more and returns how many that makes.
    std::int64_t AddVersion(Guid const& versionStack);

private:
    class Statement;

    struct CloseDatabase {
        void operator()(sqlite3* open) const;
    };

    std::string const service;
    std::mutex mutex;
    std::unique_ptr<sqlite3, CloseDatabase> database;  // guarded by mutex
};

}  // namespace quillohostkit
