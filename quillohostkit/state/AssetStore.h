#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quillohostkit/Export.h"
#include "quillohostkit/state/ChosenLocation.h"
#include "quillohostkit/state/StringStore.h"

struct sqlite3;

namespace quillohostkit {

/// Records of the assets that were shared, in an SQLite file that several processes may use at
/// once. What belongs to a service is kept apart for each. Any thread; every operation throws a
/// Failure (Other) when the file cannot be read or written.
class QUILLOHOSTKIT_API AssetStore : public StringStore {
public:
    /// Opens `file`, made when it is missing. `service` names the service that the strings are for.
    AssetStore(std::filesystem::path const& file, std::string service);
    ~AssetStore() override;
    AssetStore(AssetStore const&) = delete;
    AssetStore& operator=(AssetStore const&) = delete;

    /// The asset that stands for `path`, the same one each time.
    [[nodiscard]] AssetID AssetOf(std::filesystem::path const& path);

    [[nodiscard]] std::optional<std::string> Read(AssetID const& asset,
                                                  std::string const& key) override;
    void Write(AssetID const& asset, std::string const& key, std::string const& value) override;
    void Forget(AssetID const& asset, std::string const& key) override;

    /// Where assets go that were never shared, if the user has said so.
    [[nodiscard]] std::optional<ChosenLocation> ReadDefaultDestination();
    void WriteDefaultDestination(ChosenLocation const& location);
    void ForgetDefaultDestination();

private:
    class Statement;
    class Transaction;

    void TakeOverFormerTables();
    [[nodiscard]] std::optional<AssetID> FindAsset(std::filesystem::path const& path);

    struct CloseDatabase {
        void operator()(sqlite3* open) const;
    };

    std::string const service;
    std::mutex mutex;
    std::unique_ptr<sqlite3, CloseDatabase> database;  // guarded by mutex
};

}  // namespace quillohostkit
