#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace testsupport {

/// Gives this process a home and a runtime directory below `root` until the end of this object.
class UserDirectories {
public:
    explicit UserDirectories(std::filesystem::path root) : root(std::move(root)) {
        setenv("HOME", this->root.c_str(), 1);
        setenv("XDG_RUNTIME_DIR", Runtime().c_str(), 1);
    }
    ~UserDirectories() {
        Restore("HOME", home);
        Restore("XDG_RUNTIME_DIR", runtime);
    }
    UserDirectories(UserDirectories const&) = delete;
    UserDirectories& operator=(UserDirectories const&) = delete;

    [[nodiscard]] std::filesystem::path Runtime() const { return root / "run"; }
    [[nodiscard]] std::filesystem::path Cache() const { return root / ".cache"; }

    /// Leaves in `base` what a service at this address and port does for its user.
    void WriteSecret(std::filesystem::path const& base, std::string const& port,
                     std::string const& address, std::string const& secret) const {
        namespace fs = std::filesystem;
        auto const directory = base / "quillo" / port;
        fs::create_directories(directory);
        for (auto const& made : {base, base / "quillo", directory})
            fs::permissions(made, fs::perms::owner_all);
        auto const file = directory / (address + ".secret");
        std::ofstream(file) << secret << '\n';
        fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
    }

private:
    static std::optional<std::string> Value(char const* name) {
        char const* const value = std::getenv(name);
        return value ? std::optional<std::string>(value) : std::nullopt;
    }
    static void Restore(char const* name, std::optional<std::string> const& value) {
        if (value)
            setenv(name, value->c_str(), 1);
        else
            unsetenv(name);
    }

    std::filesystem::path const root;
    std::optional<std::string> const home = Value("HOME");
    std::optional<std::string> const runtime = Value("XDG_RUNTIME_DIR");
};

}  // namespace testsupport
