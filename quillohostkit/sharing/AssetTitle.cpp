#include "quillohostkit/sharing/AssetTitle.h"

#include <QDateTime>
#include <QFileInfo>

#include "quillohostkit/state/AssetName.h"

namespace quillohostkit {

QString TitleOf(Asset const& asset) {
    if (asset.title.isEmpty())
        return QString::fromStdString(DefaultAssetName(asset.path.toStdString()));
    // The library appends ".mp4"; a dot in a title ("Cut 1.2") is no extension.
    for (auto const& extension : {QFileInfo(asset.path).suffix(), QString("mp4")}) {
        auto const ending = "." + extension;
        if (extension.isEmpty() || asset.title.size() <= ending.size()) continue;
        if (asset.title.endsWith(ending, Qt::CaseInsensitive))
            return asset.title.chopped(ending.size());
    }
    return asset.title;
}

QString RevisionOf(Asset const& asset) {
    if (!asset.revision.isEmpty()) return asset.revision;
    return QFileInfo(asset.path).lastModified().toString(Qt::ISODateWithMs);
}

}  // namespace quillohostkit
