#pragma once

namespace quillomoxui {

/// The keys of the strings that are stored with each shared asset, through the host.
namespace assetdata {

inline constexpr char kUploadedAssetGuid[] = "KVRN.QuilloNative.ShareForReview.UploadedAssetGuid";
inline constexpr char kUploadFolderGuid[] = "KVRN.QuilloNative.ShareForReview.UploadFolderGuid";
inline constexpr char kVersionStackGuid[] = "KVRN.QuilloNative.ShareForReview.VersionStackGuid";
inline constexpr char kReviewLinkGuid[] = "KVRN.QuilloNative.ShareForReview.ReviewLinkGuid";
inline constexpr char kReviewLinkURL[] = "KVRN.QuilloNative.ShareForReview.ReviewLinkURL";

}  // namespace assetdata
}  // namespace quillomoxui
