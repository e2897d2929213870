#include "quillohostkit/state/SharedAsset.h"

#include <utility>

#include "moxcore/string/Conversions.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/text/PlainText.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"

namespace quillohostkit {
namespace {

namespace assetdata = quillomoxui::assetdata;
using moxcore::string::UTF16String;
using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;
using moxcore::utility::Guid;

}  // namespace

SharedAsset::SharedAsset(std::shared_ptr<AssetStore> newStore, Movie newMovie,
                         std::string const& newName)
    : store(std::move(newStore)),
      movie(std::move(newMovie)),
      name(newName),
      asset(store->AssetOf(movie.file)) {}

std::string SharedAsset::Stored(char const* key) const {
    return store->Read(asset, key).value_or("");
}

std::int64_t SharedAsset::Version() const {
    return store->CountVersions(Guid(Stored(assetdata::kVersionStackGuid)));
}

void SharedAsset::ForgetShares() {
    for (char const* key : {assetdata::kUploadedAssetGuid, assetdata::kVersionStackGuid,
                            assetdata::kReviewLinkGuid, assetdata::kReviewLinkURL})
        store->Forget(asset, key);
}

std::string SharedAsset::CheckLink(std::string const& link) const {
    if (IsPlainLink(link)) return link;
    for (char const* key : {assetdata::kReviewLinkGuid, assetdata::kReviewLinkURL})
        store->Forget(asset, key);
    throw Failure(FailureKind::Link,
                  "The service's link \"" + link +
                      "\" is no plain http or https address. Nothing was uploaded; share again "
                      "to have another link made.");
}

std::vector<std::string> SharedAsset::LockKeys(UTF16String const& outputFileName) const {
    return {"movie " + asset.movie.AsStdString(), "name " + UTF16to8(outputFileName)};
}

void ConnectStore(quillomoxui::ShareForReviewViewModel& viewModel,
                  std::shared_ptr<AssetStore> const& store,
                  std::function<AssetStore::Asset()> const& active,
                  std::function<void(std::exception_ptr)> const& onFailure) {
    auto const guarded = [onFailure](auto operation) {
        try {
            return operation();
        } catch (...) {
            onFailure(std::current_exception());
            return false;
        }
    };
    viewModel.SetAssetDataMethods(
        [active](Guid& first, Guid& second) {
            auto const asset = active();
            first = asset.library;
            second = asset.movie;
            return true;
        },
        [store, guarded](Guid const& first, Guid const& second, UTF16String const& key,
                         UTF16String& value) {
            return guarded([&] {
                auto const found = store->Read({first, second}, UTF16to8(key));
                if (found) value = UTF8to16(*found);
                return found.has_value();
            });
        },
        [store, guarded](Guid const& first, Guid const& second, UTF16String const& key,
                         UTF16String const& value) {
            return guarded([&] {
                AssetStore::Asset const asset{first, second};
                store->Write(asset, UTF16to8(key), UTF16to8(value));
                // Written once for each movie that the service has taken.
                if (UTF16to8(key) == assetdata::kUploadedAssetGuid)
                    store->AddVersion(
                        Guid(store->Read(asset, assetdata::kVersionStackGuid).value_or("")));
                return true;
            });
        });
}

}  // namespace quillohostkit
