#pragma once

#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "quillohostkit/AssetStrings.h"
#include "quillohostkit/state/StringStore.h"

namespace quillohostkit {

/// A host's own AssetStrings for one asset and service. The library reads and writes on threads of
/// its own; the host is asked on the main thread only: its strings are read beforehand, and what is
/// written goes there later. Made on the main thread, then any.
class HostStrings : public StringStore, public std::enable_shared_from_this<HostStrings> {
public:
    /// `onFailure` is called on the main thread with what the host throws.
    HostStrings(std::shared_ptr<AssetStrings> host, Asset asset, std::string service,
                std::function<void(std::exception_ptr)> onFailure);

    /// Reads all from the host again. Main thread.
    void Load();

    [[nodiscard]] std::optional<std::string> Read(AssetID const& id,
                                                  std::string const& key) override;
    void Write(AssetID const& id, std::string const& key, std::string const& value) override;
    void Forget(AssetID const& id, std::string const& key) override;

private:
    void Set(std::string const& key, std::optional<std::string> const& value);
    void SetAtHost(std::string const& key, std::optional<std::string> const& value) const;
    [[nodiscard]] QString KeyOf(std::string const& key) const;

    std::shared_ptr<AssetStrings> const host;  // used on the main thread
    Asset const asset;
    std::string const service;
    std::function<void(std::exception_ptr)> const onFailure;
    std::mutex mutex;
    std::map<std::string, std::string> strings;  // guarded by mutex
};

}  // namespace quillohostkit
