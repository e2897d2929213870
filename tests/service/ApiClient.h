#pragma once

#include <httplib.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace quilloservice::test {

/// A signed-in client of a service on this machine. Failures throw, so that a test shows where.
class ApiClient {
public:
    explicit ApiClient(int port);

    /// Sends a request with the token and the protocol's header on it.
    httplib::Result Send(const std::string& method, const std::string& path,
                         httplib::Headers headers = {}, const std::string& body = {});

    /// The JSON that a request is answered with; throws unless it succeeds.
    nlohmann::json Get(const std::string& path);
    nlohmann::json Post(const std::string& path, const nlohmann::json& body);

    /// Creates an upload into `folder`; returns its path.
    std::string CreateUpload(std::size_t length, const std::string& name = "movie.mp4",
                             const std::string& stack = {}, httplib::Headers headers = {});
    httplib::Result Append(const std::string& upload, std::size_t offset, const std::string& body,
                           httplib::Headers headers = {});
    std::string OffsetOf(const std::string& upload);

    /// Uploads a whole movie; returns what the asset end point says of it.
    nlohmann::json Upload(const std::string& content, const std::string& name = "movie.mp4",
                          const std::string& stack = {});

    /// Makes a link in the sample project; returns its ID.
    std::string CreateLink(const std::string& name = "Review");
    void AddToLink(const std::string& link, const std::string& asset);

    httplib::Client http;
    std::string token;
    std::string project;  ///< the first project of the sample data, and its root folder
    std::string folder;
};

/// The file in which the service at 127.0.0.1 and `port` has its user's secret, and the secret,
/// empty when there is none.
std::filesystem::path LocalUserSecretPath(int port);
std::string LocalUserSecretAt(int port);

/// An Upload-Metadata header.
std::string Metadata(const std::string& name, const std::string& folder,
                     const std::string& stack = {});

std::string ToBase64(const std::string& bytes);

/// The value of an Upload-Checksum header for `body`.
std::string ChecksumOf(const std::string& body);

/// Bytes that look the same nowhere.
std::string Noise(std::size_t size, unsigned seed = 1);

}  // namespace quilloservice::test
