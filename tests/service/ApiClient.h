#pragma once

#include <httplib.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace quilloservice::test {

/// A signed-in client of a local service. Functions that return no httplib::Result throw on
/// failure.
class ApiClient {
public:
    explicit ApiClient(int port);

    /// Sends a request with the headers Authorization and Tus-Resumable.
    httplib::Result Send(std::string const& method, std::string const& path,
                         httplib::Headers headers = {}, std::string const& body = {});

    /// Returns the JSON of a successful response.
    nlohmann::json Get(std::string const& path);
    nlohmann::json Post(std::string const& path, nlohmann::json const& body);

    /// Creates an upload into `folder`; returns its path.
    std::string CreateUpload(std::size_t length, std::string const& name = "movie.mp4",
                             std::string const& stack = {}, httplib::Headers headers = {});
    httplib::Result Append(std::string const& upload, std::size_t offset, std::string const& body,
                           httplib::Headers headers = {});
    std::string OffsetOf(std::string const& upload);

    /// Uploads a movie; returns the response of the upload's /asset.
    nlohmann::json Upload(std::string const& content, std::string const& name = "movie.mp4",
                          std::string const& stack = {});

    /// Creates a link in `project`; returns its ID.
    std::string CreateLink(std::string const& name = "Review");
    void AddToLink(std::string const& link, std::string const& asset);

    httplib::Client http;
    std::string token;
    std::string project;  ///< the first project of the sample data, and its root folder
    std::string folder;
};

/// The file with the local user's secret of the service at 127.0.0.1 and `port`, and the secret,
/// empty if there is none.
std::filesystem::path LocalUserSecretPath(int port);
std::string LocalUserSecretAt(int port);

/// The value of an Upload-Metadata header.
std::string Metadata(std::string const& name, std::string const& folder,
                     std::string const& stack = {});

std::string ToBase64(std::string const& bytes);

/// The value of an Upload-Checksum header for `body`.
std::string ChecksumOf(std::string const& body);

/// Random bytes, the same for the same `seed`.
std::string Noise(std::size_t size, unsigned seed = 1);

}  // namespace quilloservice::test
