#include "host/session/Options.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <string_view>
#include <system_error>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/Failure.h"

namespace quillohost {

using moxcore::config::Text;

char const* const kHelp =
    R"($$$/Vistrel/quillo-host/Help=quillo-host: shares a movie for review

usage: quillo-host [MOVIE]
       quillo-host share MOVIE [--name NAME] [--to PATH] [--accept-damaged] [--json]
       quillo-host locations [--depth N] [--json] [--watch]
       quillo-host choose-location [--json]
       quillo-host sign-in | sign-out | trace
       quillo-host --help | --version

              without a command: opens a window that shows MOVIE and shares it
  share       exports MOVIE, uploads it and prints the link under which it can be reviewed;
              shared again, it becomes the next version under the same link
  locations   prints the places to share to
  choose-location
              has a place chosen in a dialog, and prints its path and, on a second line, its ID
  trace       prints what the library holds, for developers

  --name NAME    the movie's name in the service (the file's name without its extension)
  --to PATH      Account/Workspace/Project/Folder/...; "\/" stands for a "/" in a name
                 (where the movie was shared last, else the first project)
  --accept-damaged
                 share what there is of a movie that cannot be read to its end
  --depth N      levels of places below the user (4: down to each project's folders)
  --json         print one JSON object instead of text
  --watch        go on, and print the places anew whenever they change (with --backend client)
  --backend B    what the places are read with: sdk, the service's SDK (the default), or client,
                 the older client library, which follows changes
  --service URL  the service's address: https, or http on this machine
                 (a quillo-service that runs as long as the command does)
  --insecure-http
                 let --service be plain http to another machine: everybody on the way can read and
                 change what is sent
  --data DIR     where the host keeps its state (the user's XDG directories)
  --browser P    the program that shows the sign-in page, run as "P URL" (the desktop's browser)

For developers of the window:

  --events FILE    write what its windows show, a line with a JSON object for each change
  --watchdog FILE  write at its end what its events took of the thread that must not block

Progress and errors go to standard error. Exit status: 0 done, 2 usage, 3 sign-in or no service,
4 location, 5 export, 6 upload, 7 link, 8 cancelled in the dialog, 130 interrupted, 1 anything else.
)";

namespace {

constexpr std::string_view kEndOfOptions = "--";

struct CommandRule {
    std::string_view name;
    Command command;
};

constexpr CommandRule kCommands[] = {
    {"share", Command::Share},
    {"locations", Command::Locations},
    {"choose-location", Command::ChooseLocation},
    {"sign-in", Command::SignIn},
    {"sign-out", Command::SignOut},
    {"trace", Command::Trace},
    {"--help", Command::Help},
    {"--version", Command::Version},
};

struct OptionRule {
    std::string_view name;
    std::vector<Command> commands;  // empty: all
    bool takesValue;
    std::function<void(Options&, std::string const&)> apply;
};

[[noreturn]] void Refuse(std::string const& message) {
    throw quillohostkit::Failure(
        quillohostkit::FailureKind::Usage,
        Text("$$$/Vistrel/quillo-host/Usage={reason} (quillo-host --help tells more)",
             {{"reason", message}}));
}

/// A file that is written to; `option` is what the user has said.
std::filesystem::path OutputFile(char const* option, std::string const& value) {
    if (value.empty())
        Refuse(Text("$$$/Vistrel/quillo-host/Usage/NoFile={option} is empty; name a file",
                    {{"option", option}}));
    return std::filesystem::absolute(value);
}

void TakeName(Options& options, std::string const& value) {
    if (std::all_of(value.begin(), value.end(), [](char c) { return c == ' ' || c == '\t'; }))
        Refuse(
            Text("$$$/Vistrel/quillo-host/Usage/NoName=--name is empty; leave it out to use the "
                 "file's name"));
    options.name = value;
}

void TakeDepth(Options& options, std::string const& value) {
    char const* const end = value.data() + value.size();
    auto const [rest, error] = std::from_chars(value.data(), end, options.depth);
    if (error != std::errc() || rest != end || options.depth < 1)
        Refuse(
            Text("$$$/Vistrel/quillo-host/Usage/Depth=--depth takes a whole number from 1, not "
                 "\"{value}\"",
                 {{"value", value}}));
}

void TakeBackend(Options& options, std::string const& value) {
    if (value != "sdk" && value != "client")
        Refuse(Text(
            "$$$/Vistrel/quillo-host/Usage/Backend=--backend takes sdk or client, not \"{value}\"",
            {{"value", value}}));
    options.backend = value == "sdk" ? Backend::Sdk : Backend::Client;
}

void TakeDirectory(Options& options, std::string const& value) {
    if (value.empty())
        Refuse(Text("$$$/Vistrel/quillo-host/Usage/NoDirectory=--data is empty; name a directory"));
    options.data = std::filesystem::absolute(value);
}

void TakeBrowser(Options& options, std::string const& value) {
    if (value.empty())
        Refuse(Text("$$$/Vistrel/quillo-host/Usage/NoBrowser=--browser is empty; name a program"));
    options.browser = value;
}

std::vector<OptionRule> const& Rules() {
    static std::vector<OptionRule> const rules = {
        {"--name", {Command::Share}, true, TakeName},
        {"--to",
         {Command::Share},
         true,
         [](Options& options, auto& value) { options.to = quillohostkit::SplitNamePath(value); }},
        {"--depth", {Command::Locations}, true, TakeDepth},
        {"--json",
         {Command::Share, Command::Locations, Command::ChooseLocation},
         false,
         [](Options& options, auto&) { options.json = true; }},
        {"--accept-damaged",
         {Command::Share},
         false,
         [](Options& options, auto&) { options.acceptDamaged = true; }},
        {"--watch",
         {Command::Locations},
         false,
         [](Options& options, auto&) { options.watch = true; }},
        {"--backend",
         {Command::Share, Command::Locations, Command::ChooseLocation, Command::Trace},
         true,
         TakeBackend},
        {"--service", {}, true, [](Options& options, auto& value) { options.service = value; }},
        {"--insecure-http",
         {},
         false,
         [](Options& options, auto&) { options.insecureHttp = true; }},
        {"--data", {}, true, TakeDirectory},
        {"--browser",
         {Command::Editor, Command::Share, Command::Locations, Command::ChooseLocation,
          Command::SignIn, Command::Trace},
         true,
         TakeBrowser},
        {"--events",
         {Command::Editor, Command::ChooseLocation},
         true,
         [](Options& options, auto& value) { options.events = OutputFile("--events", value); }},
        {"--watchdog",
         {Command::Editor},
         true,
         [](Options& options, auto& value) { options.watchdog = OutputFile("--watchdog", value); }},
    };
    return rules;
}

/// Splits "--option=value".
struct Argument {
    explicit Argument(std::string const& text) : name(text.substr(0, text.find('='))) {
        if (name.size() < text.size()) value = text.substr(name.size() + 1);
    }
    std::string name;
    std::optional<std::string> value;
};

/// Takes the option at `position` and its value; afterwards `position` is at the last word taken.
void TakeOption(Options& options, std::string const& commandName,
                std::vector<std::string> const& arguments, std::size_t& position) {
    Argument argument(arguments[position]);
    auto const rule = std::find_if(Rules().begin(), Rules().end(),
                                   [&](auto const& r) { return r.name == argument.name; });
    if (rule == Rules().end())
        Refuse(Text("$$$/Vistrel/quillo-host/Usage/NoOption=there is no option {option}",
                    {{"option", argument.name}}));
    auto const& commands = rule->commands;
    if (!commands.empty() &&
        std::find(commands.begin(), commands.end(), options.command) == commands.end())
        Refuse(Text("$$$/Vistrel/quillo-host/Usage/NotOfCommand={option} is no option of {command}",
                    {{"option", argument.name}, {"command", commandName}}));
    if (!rule->takesValue && argument.value)
        Refuse(Text("$$$/Vistrel/quillo-host/Usage/NoValue={option} takes no value",
                    {{"option", argument.name}}));
    if (rule->takesValue && !argument.value) {
        if (++position == arguments.size())
            Refuse(
                Text("$$$/Vistrel/quillo-host/Usage/ValueMissing={option} needs a value after it",
                     {{"option", argument.name}}));
        argument.value = arguments[position];
    }
    rule->apply(options, argument.value.value_or(""));
}

void TakeMovie(Options& options, std::string const& commandName, std::string const& word) {
    if (options.command != Command::Share && options.command != Command::Editor)
        Refuse(Text("$$$/Vistrel/quillo-host/Usage/NoWord={command} takes no \"{word}\"",
                    {{"command", commandName}, {"word", word}}));
    if (!options.movie.empty())
        Refuse(
            Text("$$$/Vistrel/quillo-host/Usage/SecondMovie={command} takes one movie; \"{word}\" "
                 "is a second one",
                 {{"command", commandName}, {"word", word}}));
    if (word.empty())
        Refuse(Text("$$$/Vistrel/quillo-host/Usage/MovieEmpty=the movie's name is empty"));
    options.movie = word;
}

}  // namespace

Options ParseOptions(std::vector<std::string> const& arguments) {
    if (std::find(arguments.begin(), arguments.end(), "--help") != arguments.end()) return {};

    auto const* const rule = std::find_if(
        std::begin(kCommands), std::end(kCommands),
        [&](auto& each) { return !arguments.empty() && each.name == arguments.front(); });
    bool const isCommand = rule != std::end(kCommands);
    std::string const commandName = isCommand
                                        ? std::string(rule->name)
                                        : Text("$$$/Vistrel/quillo-host/Usage/Window=the window");

    Options options;
    options.command = isCommand ? rule->command : Command::Editor;
    bool optionsEnded = false;
    for (std::size_t i = isCommand ? 1 : 0; i < arguments.size(); ++i) {
        std::string const& word = arguments[i];
        if (!optionsEnded && word == kEndOfOptions)
            optionsEnded = true;
        else if (!optionsEnded && word.starts_with("-") && word != "-")
            TakeOption(options, commandName, arguments, i);
        else
            TakeMovie(options, commandName, word);
    }
    if (options.command == Command::Share && options.movie.empty())
        Refuse(Text("$$$/Vistrel/quillo-host/Usage/NoMovie=share needs the name of a movie"));
    if (options.watch && options.backend != Backend::Client)
        Refuse(
            Text("$$$/Vistrel/quillo-host/Usage/Watch=--watch needs --backend client: the SDK does "
                 "not tell of changes"));
    // Most likely a command that is misspelt; a window would come up to say so.
    if (std::error_code error; options.command == Command::Editor && !options.movie.empty() &&
                               !std::filesystem::exists(options.movie, error))
        Refuse(Text(
            "$$$/Vistrel/quillo-host/Usage/NoSuchMovie=there is no command and no movie \"{word}\"",
            {{"word", options.movie.string()}}));
    return options;
}

}  // namespace quillohost
