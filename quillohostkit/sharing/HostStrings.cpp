#include "quillohostkit/sharing/HostStrings.h"

#include <utility>

#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"

namespace quillohostkit {
namespace {

namespace assetdata = quillomoxui::assetdata;

constexpr char const* kKeys[] = {assetdata::kUploadedAssetGuid, assetdata::kUploadFolderGuid,
                                 assetdata::kVersionStackGuid,  assetdata::kReviewLinkGuid,
                                 assetdata::kReviewLinkURL,     stringkeys::kLocation,
                                 stringkeys::kVersions};

}  // namespace

AssetStrings::~AssetStrings() = default;

HostStrings::HostStrings(std::shared_ptr<AssetStrings> newHost, Asset newAsset,
                         std::string newService,
                         std::function<void(std::exception_ptr)> newOnFailure)
    : host(std::move(newHost)),
      asset(std::move(newAsset)),
      service(std::move(newService)),
      onFailure(std::move(newOnFailure)) {}

void HostStrings::Load() {
    std::map<std::string, std::string> read;
    try {
        for (char const* key : kKeys)
            if (auto const value = host->Read(asset, KeyOf(key))) read[key] = value->toStdString();
    } catch (...) {
        return onFailure(std::current_exception());
    }
    std::lock_guard lock(mutex);
    strings.swap(read);
}

std::optional<std::string> HostStrings::Read(AssetID const&, std::string const& key) {
    std::lock_guard lock(mutex);
    auto const found = strings.find(key);
    if (found == strings.end()) return std::nullopt;
    return found->second;
}

void HostStrings::Write(AssetID const&, std::string const& key, std::string const& value) {
    Set(key, value);
}

void HostStrings::Forget(AssetID const&, std::string const& key) {
    Set(key, std::nullopt);
}

void HostStrings::Set(std::string const& key, std::optional<std::string> const& value) {
    {
        std::lock_guard lock(mutex);
        if (value)
            strings[key] = *value;
        else
            strings.erase(key);
    }
    // In the order in which they are written, also those of the main thread.
    moxcore::threads::AsyncCallFromMainThread(
        [self = shared_from_this(), key, value] { self->SetAtHost(key, value); }, 0);
}

void HostStrings::SetAtHost(std::string const& key, std::optional<std::string> const& value) const {
    try {
        host->Write(asset, KeyOf(key),
                    value ? std::optional(QString::fromStdString(*value)) : std::nullopt);
    } catch (...) {
        onFailure(std::current_exception());
    }
}

QString HostStrings::KeyOf(std::string const& key) const {
    return QString::fromStdString(key + "@" + service);
}

}  // namespace quillohostkit
