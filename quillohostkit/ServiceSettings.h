#pragma once

#include <QString>

#include "quillohostkit/Export.h"

namespace quillohostkit {

/// How this program reaches the review service. All of it may be left empty.
struct ServiceSettings {
    /// "https://review.example". Empty: the value of the environment variable QUILLO_SERVICE_URL,
    /// else "Quillo/service" of the application's QSettings.
    QString address{};
    /// A name under which strings of assets and the default destination are kept. Empty: the
    /// address. For a service that changes its port.
    QString name{};
    /// The application's OAuth client ID. Empty: its name, QCoreApplication::applicationName.
    QString clientID{};
    /// The program that opens web pages, for the sign-in. Empty: the desktop's.
    QString browser{};
    /// Where the kit keeps its database. Empty: QStandardPaths::AppDataLocation.
    QString dataDirectory{};
};

/// Sets them, before or after buttons are made; the address and the browser may change later,
/// other values are taken once. Returns what is wrong, one sentence for the user: an address that
/// is none, or plain http to another machine. Empty: nothing. Main thread.
QUILLOHOSTKIT_API QString SetServiceSettings(ServiceSettings const& settings);

}  // namespace quillohostkit
