#pragma once

#include <QString>

namespace quillohostkit {

/// What is seen of an asset, for the icon beside its name.
enum class AssetKind {
    Movie,  ///< pictures, with or without sound
    Sound,  ///< sound alone
};

/// What a host shares: a movie, or one sequence of a project. A plain value.
struct Asset {
    /// Names the asset: its versions, its link and its destination are kept under this text. The
    /// path of a movie; for a sequence of a project, the project's path with the sequence's name or
    /// ID behind it. Empty: there is nothing to share.
    QString path = {};
    /// Its name for the user and on the review page. An extension of the file is left out. Empty:
    /// the file's name.
    QString title = {};
    AssetKind kind = AssetKind::Movie;
    /// Anything that differs after each change of the asset. Once it has been shared, the popup
    /// shows the link until this changes. Empty: the time at which the file `path` was written.
    QString revision = {};
};

}  // namespace quillohostkit
