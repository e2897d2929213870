#pragma once

#include <QWidget>
#include <memory>
#include <string>

#include "quillohostkit/Asset.h"
#include "quillohostkit/AssetStrings.h"
#include "quillohostkit/Exporter.h"

namespace quillohostkit {

/// A place in the host from which an asset is shared. Main thread.
class SharingClient {
public:
    virtual ~SharingClient() = default;

    /// May throw what the host throws.
    [[nodiscard]] virtual Asset GetAsset() const = 0;
    [[nodiscard]] virtual std::shared_ptr<Exporter> GetExporter() const = 0;
    /// Null for the kit's own.
    [[nodiscard]] virtual std::shared_ptr<AssetStrings> GetStrings() const = 0;
    /// What the popup hangs from.
    [[nodiscard]] virtual QWidget& GetAnchor() const = 0;

    /// Sharing::GetStatus answers something else.
    virtual void OnChanged() = 0;
    /// One line for the user; empty: the one before holds no longer.
    virtual void OnMessage(std::string const& line) = 0;
    /// The client's asset has been shared, or not.
    virtual void OnFinished() = 0;
    virtual void OnFailed(std::string const& reason) = 0;
};

}  // namespace quillohostkit
