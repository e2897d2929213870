#pragma once

#include <QString>

#include "host/gallery/Specimen.h"

namespace quillogallery {

/// Writes a PNG for each of `kinds` and for each window of the toolkit's into `directory`, which is
/// made when it is not there; `suffix` ends their names. False, with a message on standard error,
/// when one cannot be written.
[[nodiscard]] bool WritePictures(QString const& directory, QString const& suffix,
                                 std::vector<Kind> const& kinds);

}  // namespace quillogallery
