#include "quillohostkit/state/SharedAsset.h"

#include <map>
#include <mutex>
#include <sstream>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "moxcore/string/Conversions.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/text/PlainText.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

namespace assetdata = quillomoxui::assetdata;
using moxcore::string::UTF16String;
using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;
using moxcore::utility::Guid;

/// How many versions the asset's version stack has. Another stack begins at none.
std::int64_t CountVersions(StringStore& strings, AssetID const& id) {
    std::istringstream counted(strings.Read(id, stringkeys::kVersions).value_or(""));
    std::string stack;
    std::int64_t count = 0;
    counted >> stack >> count;
    return stack == strings.Read(id, assetdata::kVersionStackGuid).value_or("") ? count : 0;
}

void AddVersion(StringStore& strings, AssetID const& id) {
    auto const count = CountVersions(strings, id) + 1;
    strings.Write(
        id, stringkeys::kVersions,
        strings.Read(id, assetdata::kVersionStackGuid).value_or("") + ' ' + std::to_string(count));
}

/// The strings of the assets known to the library. Any thread.
class KnownAssets {
public:
    void Add(SharedAsset const& asset) {
        std::lock_guard lock(mutex);
        strings[asset.GetID()] = asset.Strings();
    }

    [[nodiscard]] std::shared_ptr<StringStore> Find(AssetID const& id) const {
        std::lock_guard lock(mutex);
        auto const found = strings.find(id);
        return found == strings.end() ? nullptr : found->second;
    }

private:
    mutable std::mutex mutex;
    std::map<AssetID, std::shared_ptr<StringStore>> strings;  // guarded by mutex
};

}  // namespace

StringStore::~StringStore() = default;

SharedAsset::SharedAsset(std::shared_ptr<StringStore> newStrings, AssetID const& newID,
                         std::string newName)
    : strings(std::move(newStrings)), id(newID), name(std::move(newName)) {}

std::string SharedAsset::Stored(char const* key) const {
    return strings->Read(id, key).value_or("");
}

IDPath SharedAsset::GetIDPath() const {
    return IDPathFromText(Stored(stringkeys::kLocation));
}

void SharedAsset::SetIDPath(IDPath const& path) {
    strings->Write(id, stringkeys::kLocation, TextOf(path));
}

std::int64_t SharedAsset::Version() const {
    return CountVersions(*strings, id);
}

void SharedAsset::ForgetShares() {
    for (char const* key : {assetdata::kUploadedAssetGuid, assetdata::kVersionStackGuid,
                            assetdata::kReviewLinkGuid, assetdata::kReviewLinkURL})
        strings->Forget(id, key);
}

std::string SharedAsset::CheckLink(std::string const& link) const {
    if (IsPlainLink(link)) return link;
    for (char const* key : {assetdata::kReviewLinkGuid, assetdata::kReviewLinkURL})
        strings->Forget(id, key);
    throw Failure(
        FailureKind::Link,
        Text("$$$/Vistrel/quillohostkit/Share/BadLink=The service's link \"{link}\" is no plain "
             "http or https address. Nothing was uploaded; share again to have another link made.",
             {{"link", link}}));
}

std::vector<std::string> SharedAsset::LockKeys(UTF16String const& outputFileName) const {
    return {"movie " + id.asset.AsStdString(), "name " + UTF16to8(outputFileName)};
}

void ConnectStore(quillomoxui::ShareForReviewViewModel& viewModel,
                  std::function<std::shared_ptr<SharedAsset const>()> const& active,
                  std::function<void(std::exception_ptr)> const& onFailure) {
    auto const known = std::make_shared<KnownAssets>();
    // What `operation` answers for the strings of the asset; false for an unknown one.
    auto const guarded = [known, onFailure](AssetID const& id, auto operation) {
        try {
            auto const strings = known->Find(id);
            return strings && operation(*strings);
        } catch (...) {
            onFailure(std::current_exception());
            return false;
        }
    };
    viewModel.SetAssetDataMethods(
        [active, known](Guid& first, Guid& second) {
            auto const asset = active();
            if (!asset) return false;
            known->Add(*asset);
            first = asset->GetID().store;
            second = asset->GetID().asset;
            return true;
        },
        [guarded](Guid const& first, Guid const& second, UTF16String const& key,
                  UTF16String& value) {
            return guarded({first, second}, [&](StringStore& strings) {
                auto const found = strings.Read({first, second}, UTF16to8(key));
                if (found) value = UTF8to16(*found);
                return found.has_value();
            });
        },
        [guarded](Guid const& first, Guid const& second, UTF16String const& key,
                  UTF16String const& value) {
            return guarded({first, second}, [&](StringStore& strings) {
                AssetID const id{first, second};
                strings.Write(id, UTF16to8(key), UTF16to8(value));
                // Written once for each movie that the service has taken.
                if (UTF16to8(key) == assetdata::kUploadedAssetGuid) AddVersion(strings, id);
                return true;
            });
        });
}

}  // namespace quillohostkit
