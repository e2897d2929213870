#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "quillosdk/Transport.h"

namespace testsupport {

/// What happens to a request on its way.
enum class Weather {
    Fair,
    LoseRequest,      ///< it does not arrive
    KeepHalf,         ///< the connection is cut in its middle, and what has arrived is kept
    LoseAnswer,       ///< it is done, and the answer does not arrive
    LoseUpload,       ///< the service has lost the upload before
    LoseHalf,         ///< the service is killed and comes back with half of the upload's bytes
    CorruptContent,   ///< it is done, and the bytes stored are others afterwards
    KeepHalfPolitely  ///< half of it is kept, and the answer says so
};

/// A tus service in memory, with weather. By its test's thread.
class FakeTus {
public:
    /// Something that happens to the next request of a method, JOIN for one that joins parts:
    /// weather, or, where there is a status, an answer in its place.
    struct Event {
        std::string method;
        Weather weather = Weather::Fair;
        int status = 0;
        quillosdk::Headers headers;
    };

    struct Upload {
        std::string key;
        std::string metadata;
        std::size_t length = 0;
        std::string bytes;
        bool isPart = false;
    };

    std::deque<Event> events;
    std::function<void(quillosdk::HttpRequest const&)> onRequest;  ///< sees each one first
    std::optional<std::string> location;                           ///< instead of the right one
    std::string extensions = "creation,checksum,concatenation,termination";
    bool namesAsset = false;  ///< the answer to the last piece describes the published movie
    std::map<std::string, Upload> uploads;  ///< by path

    [[nodiscard]] std::optional<quillosdk::HttpResponse> Answer(
        quillosdk::HttpRequest const& request);

private:
    [[nodiscard]] Event NextEvent(std::string const& method);
    [[nodiscard]] quillosdk::HttpResponse Create(quillosdk::HttpRequest const& request);
    [[nodiscard]] quillosdk::HttpResponse Join(quillosdk::HttpRequest const& request);
    [[nodiscard]] quillosdk::HttpResponse Append(Upload& upload,
                                                 quillosdk::HttpRequest const& request);

    int created = 0;
    std::map<std::string, std::string> joined;  // the movies' paths, by the parts'
};

/// In hexadecimal.
[[nodiscard]] std::string Sha256Of(std::string const& bytes);

}  // namespace testsupport
