#include "quillohostkit/CopyExporter.h"

#include <QFile>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/process/FileFailures.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

constexpr qint64 kPiece = 1 << 20;

[[noreturn]] void ThrowFor(QFile const& file, char const* keyAndDefault) {
    throw Failure(FailureKind::Export,
                  Text(keyAndDefault, {{"file", file.fileName().toStdString()},
                                       {"reason", file.errorString().toStdString()}}));
}

}  // namespace

CopyExporter::CopyExporter() = default;

CopyExporter::CopyExporter(Path newPath) : path(std::move(newPath)) {}

void CopyExporter::Export(ExportJob& job) {
    QFile from(path ? path() : job.GetAsset().path);
    QFile to(job.OutputFile());
    if (!from.open(QIODevice::ReadOnly)) ThrowFor(from, kCannotRead);
    if (!to.open(QIODevice::WriteOnly)) ThrowFor(to, kCannotWrite);
    auto const size = static_cast<double>(from.size());
    QByteArray piece;
    while (!job.IsCancelled() && !(piece = from.read(kPiece)).isEmpty()) {
        if (to.write(piece) != piece.size()) ThrowFor(to, kCannotWrite);
        job.SetProgress(static_cast<double>(to.pos()) / size);
    }
    if (from.error() != QFileDevice::NoError) ThrowFor(from, kCannotRead);
    if (!to.flush()) ThrowFor(to, kCannotWrite);
}

}  // namespace quillohostkit
