#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "quillohostkit/session/NamePath.h"

namespace quillohost {

enum class Command {
    Editor,
    Share,
    Locations,
    ChooseLocation,
    SignIn,
    SignOut,
    Trace,
    Help,
    Version
};

/// The source of the library's tree of places.
enum class Backend { Sdk, Client };

/// The parsed command line.
struct Options {
    Command command = Command::Help;
    std::filesystem::path movie;         ///< as given; may be empty for the editor
    std::optional<std::string> name;     ///< never empty
    quillohostkit::NamePath to;          ///< empty: not given
    std::optional<std::string> service;  ///< address; absent: a service of the host's own
    bool insecureHttp = false;           ///< the address may be plain http to another machine
    std::optional<std::filesystem::path> data;
    Backend backend = Backend::Sdk;
    std::optional<std::string> browser;             ///< program; absent: the desktop's own
    std::optional<std::filesystem::path> events;    ///< where the editor logs what it shows
    std::optional<std::filesystem::path> watchdog;  ///< where the editor logs how long it blocked
    int depth = 4;
    bool watch = false;
    bool json = false;
    bool acceptDamaged =
        false;  ///< a movie that cannot be read to its end is shared as far as it can
};

/// Reads the arguments that follow the program's name. A Failure (Usage) when they cannot be
/// understood.
[[nodiscard]] Options ParseOptions(std::vector<std::string> const& arguments);

/// The text of --help.
extern char const* const kHelp;

}  // namespace quillohost
