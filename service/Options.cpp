#include "service/Options.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <iterator>
#include <map>

#include "service/ConfigFile.h"
#include "service/base/Text.h"
#include "service/http/Address.h"

namespace quilloservice {

char const* const kHelp =
    R"(quillo-service: a review service for development and tests

usage: quillo-service --data DIR [options]
       quillo-service migrate --data DIR --database URL

  --data DIR                 where the store and the movies are kept, a directory of your own that
                             nobody else can write; made when missing
  --database URL             keep the records in PostgreSQL instead of DIR, for example
                             postgresql://quillo@db.example/quillo; movies stay in DIR. QUILLO_DATABASE
                             in the environment does the same unless this option is there ("none":
                             in DIR). The password belongs there or into libpq's password file
  --port N                   the port; absent or 0: the one used last with DIR if it is free, or any
  --host ADDR                the address to listen on (127.0.0.1)
  --sample small|large|none  what a new store is filled with (small)
  --trust-local-user         sign in the sample user without a browser when asked by a program of the
                             user who starts this, on this machine
  --allow-origin ORIGIN      let the pages of ORIGIN use the service from a browser (CORS)
  --public-address URL       how clients reach the service, for example https://review.example, if that is
                             not the address that they name: for review links and the sign-in
  --proxy ADDRESS            the IP address of a reverse proxy in front, which is believed when it says
                             for whom it asks (the last one in X-Forwarded-For)
  --limit N/SECONDS          at most N requests of each kind in SECONDS, instead of the kinds' own limits
  --stop-with-stdin          stop when standard input reaches its end
  --log requests|failures    what is written to standard error: a line of JSON for each request, or
                             only what failed (failures)
  --drain SECONDS            on SIGTERM take no new connections, and wait for the requests that are
                             running, but so long at most (0); a second signal stops at once
  --config FILE              options, one in a line: "name = value", the name without the dashes, "yes"
                             for those without a value; "#" begins a comment. The command line and
                             QUILLO_DATABASE override the file
  --help                     print this

faults, for tests of clients:
  --latency MS               answer every request MS milliseconds later
  --fail RATE                answer this share (0 to 1) of the /v1 requests with 500
  --drop-upload-after BYTES  cut each upload's connection once, when it has grown to BYTES

migrate copies the records in DIR to an empty database, and leaves DIR as it is.
docs/operating.md describes how to choose and move.

It prints "quillo-service listening on URL" when it is ready, and stops on SIGINT or SIGTERM.
docs/service-api.md describes what it speaks.
)";

namespace {

std::int64_t NumberIn(std::string const& option, std::string const& text, std::int64_t lowest,
                      std::int64_t highest) {
    std::optional<std::int64_t> number = ParseNumber(text);
    if (!number || *number < lowest || *number > highest) {
        throw UsageError(option + " takes a whole number from " + std::to_string(lowest) + " to " +
                         std::to_string(highest) + ", not \"" + text + "\"");
    }
    return *number;
}

RateLimit ParseLimit(std::string const& text) {
    std::size_t slash = text.find('/');
    if (slash == std::string::npos) {
        throw UsageError("--limit takes N/SECONDS, for example 60/60, not \"" + text + "\"");
    }
    auto requests = NumberIn("--limit N/SECONDS", text.substr(0, slash), 1, 1'000'000);
    auto seconds = NumberIn("--limit N/SECONDS", text.substr(slash + 1), 1, 86'400);
    return {static_cast<std::size_t>(requests), std::chrono::seconds(seconds)};
}

SampleSize ParseSample(std::string const& text) {
    if (text == "small") return SampleSize::Small;
    if (text == "large") return SampleSize::Large;
    if (text == "none") return SampleSize::None;
    throw UsageError("--sample takes small, large or none, not \"" + text + "\"");
}

/// A scheme, a host and perhaps a port, in the form in which browsers send an origin.
std::string ParseOrigin(std::string const& option, std::string const& text) {
    std::size_t scheme = text.starts_with("https://") ? 8 : text.starts_with("http://") ? 7 : 0;
    std::string host = text.substr(scheme);
    if (scheme == 0 || host.empty() ||
        host.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789.-:[]") != std::string::npos) {
        throw UsageError(option + " takes an origin, for example https://review.example, not \"" +
                         text + "\"");
    }
    return text;
}

/// Does not repeat the text in its message: it may contain a password.
std::string ParseDatabase(std::string const& text) {
    if (text == "none") return "";
    if (!text.starts_with("postgresql://") && !text.starts_with("postgres://")) {
        throw UsageError(
            "--database (or QUILLO_DATABASE) takes an address, for example "
            "postgresql://quillo@db.example/quillo");
    }
    return text;
}

double ParseRate(std::string const& text) {
    double rate = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rate);
    if (error != std::errc() || end != text.data() + text.size() || !(rate >= 0 && rate <= 1)) {
        throw UsageError("--fail takes a number from 0 to 1, for example 0.2, not \"" + text +
                         "\"");
    }
    return rate;
}

std::string ParseProxy(std::string const& text) {
    if (auto address = http::ParseAddress(text)) return *address;
    throw UsageError("--proxy takes an IP address, for example 127.0.0.1, not \"" + text + "\"");
}

bool ParseLog(std::string const& text) {
    if (text == "requests") return true;
    if (text == "failures") return false;
    throw UsageError("--log takes requests or failures, not \"" + text + "\"");
}

bool ParseSwitch(std::string const& option, std::string const& text) {
    if (text == "yes") return true;
    if (text == "no") return false;
    throw UsageError(option + " takes yes or no, not \"" + text + "\"");
}

bool HasPassword(std::string const& database) {
    std::size_t const user = database.find("//") + 2;
    std::size_t const end = database.find('@', user);
    std::size_t const colon = database.find(':', user);
    return (end != std::string::npos && colon < end) ||
           database.find("password=") != std::string::npos;
}

/// Sets options by their names, dashes included.
class OptionSetter {
public:
    explicit OptionSetter(Options& options) : options(options) {}

    /// The switch of this name; null if there is none.
    [[nodiscard]] bool* FindSwitch(std::string const& name) const {
        auto const found = switches.find(name);
        return found == switches.end() ? nullptr : found->second;
    }

    [[nodiscard]] bool TakesValue(std::string const& name) const { return values.contains(name); }
    void Set(std::string const& name, std::string const& value) const { values.at(name)(value); }

private:
    Options& options;

    std::map<std::string, bool*> const switches = {
        {"--help", &options.help},
        {"--trust-local-user", &options.trustLocalUser},
        {"--stop-with-stdin", &options.stopWithStdin},
    };

    std::map<std::string, std::function<void(std::string const&)>> const values = {
        {"--data", [this](auto& text) { options.dataDirectory = text; }},
        {"--database", [this](auto& text) { options.database = ParseDatabase(text); }},
        {"--host", [this](auto& text) { options.host = text; }},
        {"--port",
         [this](auto& text) {
             options.port = static_cast<int>(NumberIn("--port", text, 0, 65535));
         }},
        {"--log", [this](auto& text) { options.logRequests = ParseLog(text); }},
        {"--drain",
         [this](auto& text) {
             options.drain = std::chrono::seconds(NumberIn("--drain", text, 0, 86'400));
         }},
        {"--allow-origin",
         [this](auto& text) { options.allowOrigin = ParseOrigin("--allow-origin", text); }},
        {"--public-address",
         [this](auto& text) { options.publicAddress = ParseOrigin("--public-address", text); }},
        {"--proxy", [this](auto& text) { options.proxy = ParseProxy(text); }},
        {"--sample", [this](auto& text) { options.sample = ParseSample(text); }},
        {"--limit", [this](auto& text) { options.limit = ParseLimit(text); }},
        {"--latency",
         [this](auto& text) {
             options.faults.latency =
                 std::chrono::milliseconds(NumberIn("--latency", text, 0, 600'000));
         }},
        {"--fail", [this](auto& text) { options.faults.failRate = ParseRate(text); }},
        {"--drop-upload-after",
         [this](auto& text) {
             options.faults.dropUploadAfterBytes =
                 NumberIn("--drop-upload-after", text, 1, std::int64_t{1} << 40);
         }},
    };
};

void ApplyConfigFile(std::string const& path, OptionSetter const& setter, Options const& options) {
    for (ConfigEntry const& entry : ReadConfigFile(path)) {
        std::string const option = "--" + entry.name;
        try {
            if (bool* const flag = setter.FindSwitch(option)) {
                *flag = ParseSwitch(option, entry.value);
            } else if (setter.TakesValue(option)) {
                setter.Set(option, entry.value);
            } else {
                throw UsageError("unknown option \"" + entry.name + "\"");
            }
        } catch (UsageError const& error) {
            throw UsageError(path + ", line " + std::to_string(entry.line) + ": " + error.what());
        }
    }
    if (HasPassword(options.database)) CheckIsPrivate(path);
}

/// The value of the last --config; nothing if there is none.
std::optional<std::string> FindConfigFile(std::vector<std::string> const& arguments) {
    auto const found = std::find(arguments.rbegin(), arguments.rend(), "--config");
    if (found == arguments.rend() || found == arguments.rbegin()) return std::nullopt;
    return *std::prev(found);
}

}  // namespace

Options ParseOptions(std::vector<std::string> const& arguments, char const* database) {
    Options options;
    OptionSetter const setter(options);
    if (auto const config = FindConfigFile(arguments)) ApplyConfigFile(*config, setter, options);
    if (database != nullptr && *database != '\0') options.database = ParseDatabase(database);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string const& argument = arguments[i];
        if (i == 0 && argument == "migrate") {
            options.migrate = true;
        } else if (bool* const flag = setter.FindSwitch(argument)) {
            *flag = true;
        } else if (setter.TakesValue(argument) || argument == "--config") {
            if (++i == arguments.size()) throw UsageError(argument + " needs a value after it");
            if (argument != "--config") setter.Set(argument, arguments[i]);
        } else {
            // Up to a "=": what follows may be a secret.
            throw UsageError("unknown argument \"" + argument.substr(0, argument.find('=')) +
                             "\"; --help lists the known ones");
        }
    }
    if (!options.help && options.dataDirectory.empty()) {
        throw UsageError("--data DIR is missing: name the directory that holds the service's data");
    }
    if (options.migrate && options.database.empty()) {
        throw UsageError("migrate copies to a database; name it with --database URL");
    }
    return options;
}

}  // namespace quilloservice
