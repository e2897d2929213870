#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quilloauth/AuthSession.h"
#include "quillosdk/QuilloClient.h"
#include "tests/support/ServiceProcess.h"

namespace uploadbench {

constexpr std::uint64_t kMiB = std::uint64_t{1} << 20;

/// A directory that is removed at the end.
class Scratch {
public:
    explicit Scratch(std::filesystem::path const& parent);
    ~Scratch();
    Scratch(Scratch const&) = delete;
    Scratch& operator=(Scratch const&) = delete;

    std::filesystem::path const path;
};

void WriteRandom(std::filesystem::path const& path, std::uint64_t bytes);

double Median(std::vector<double> values);

/// A service, and the two that upload to it: TransferManager and the curl program.
class UploadPeers {
public:
    explicit UploadPeers(std::filesystem::path const& scratch);

    [[nodiscard]] std::string ServiceAddress() const { return service.Address(); }

    /// Both upload to this address from now on, which leads to the service.
    void GoThrough(std::string const& newAddress);

    void UploadOurs(std::filesystem::path const& path);

    /// One PATCH of the whole file.
    void UploadCurls(std::filesystem::path const& path);

    /// In MiB/s.
    static double Measure(std::filesystem::path const& path, std::function<void()> const& upload);

private:
    [[nodiscard]] std::string Metadata() const;

    testsupport::ServiceProcess service;
    std::string address;
    std::shared_ptr<quilloauth::AuthSession> auth;
    std::string token;
    quillosdk::QuilloClient client{quillosdk::QuilloConfig("bench"), {}};
    quillocommon::Guid folder;
};

}  // namespace uploadbench
