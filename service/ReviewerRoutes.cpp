#include <httplib.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "service/Api.h"
#include "service/ApiError.h"
#include "service/ByteRange.h"
#include "service/Call.h"
#include "service/DataDirectory.h"
#include "service/File.h"
#include "service/ReviewLinks.h"
#include "service/ReviewPage.h"
#include "service/Routes.h"
#include "service/Text.h"

namespace quilloservice {

namespace {

constexpr std::size_t kReadBytes = 256 * 1024;

void AnswerPage(Call& call, int status, const std::string& html) {
    call.response.set_header("Cache-Control", "no-cache");
    call.AnswerPage(status, html, reviewpage::SecurityPolicy());
}

/// The media type to serve a movie as. What its uploader calls it decides only between media, so
/// that no movie is run as a page.
std::string SafeMediaType(const std::string& mediaType) {
    bool media = mediaType.starts_with("video/") || mediaType.starts_with("audio/");
    return media ? mediaType : "application/octet-stream";
}

const MovieVersion* FindVersion(const ReviewContent& content, const std::string& asset) {
    for (const auto& versions : content.movies) {
        for (const MovieVersion& version : versions) {
            if (version.asset == asset) return &version;
        }
    }
    return nullptr;
}

/// The part of the movie that the request's Range and If-Range headers ask for.
RangeRequest ReadRange(const Call& call, const MovieVersion& movie, const std::string& tag) {
    auto range = call.Header("Range");
    if (!range || call.Header("If-Range").value_or(tag) != tag) return {};
    return ParseRange(*range, movie.bytes);
}

void AnswerMovie(Call& call, const MovieVersion& movie, const DataDirectory& directory) {
    httplib::Response& response = call.response;
    std::string tag = "\"" + movie.sha256 + "\"";
    response.set_header("ETag", tag);
    response.set_header("Cache-Control", "private, max-age=3600");
    if (call.Header("If-None-Match") == tag) {
        response.status = 304;
        return;
    }
    response.set_header("Accept-Ranges", "bytes");
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Content-Security-Policy", "default-src 'none'; sandbox");
    RangeRequest range = ReadRange(call, movie, tag);
    std::string size = std::to_string(movie.bytes);
    if (range.unsatisfiable) {
        response.set_header("Content-Range", "bytes */" + size);
        throw ApiError(416, "range_not_satisfiable", "The movie has " + size + " bytes.");
    }
    ByteRange part = range.part.value_or(ByteRange{0, movie.bytes});
    response.status = range.part ? 206 : 200;
    if (range.part) {
        response.set_header("Content-Range", "bytes " + std::to_string(part.first) + "-" +
                                                 std::to_string(part.first + part.length - 1) +
                                                 "/" + size);
    }
    std::string disposition = call.request.has_param("download") ? "attachment" : "inline";
    response.set_header("Content-Disposition",
                        disposition + "; filename*=UTF-8''" + PercentEncode(movie.name));

    auto file = std::make_shared<File>(directory.MoviePath(movie.asset), File::Mode::Read);
    auto buffer = std::make_shared<std::vector<char>>(kReadBytes);
    response.set_content_provider(
        static_cast<std::size_t>(part.length), SafeMediaType(movie.mediaType),
        [file, buffer, part](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
            std::size_t count = file->ReadAt(part.first + static_cast<std::int64_t>(offset),
                                             buffer->data(), std::min(length, buffer->size()));
            return count > 0 && sink.write(buffer->data(), count);
        });
}

}  // namespace

void AddReviewerRoutes(Api& api, const ReviewLinks& links, const DataDirectory& directory) {
    api.Add({"GET", "/r/{id}", [&links](Call& call) {
                 auto content = links.Find(call.ids[0]);
                 if (!content) return AnswerPage(call, 404, reviewpage::RenderNotFound());
                 AnswerPage(call, 200,
                            reviewpage::Render(*content, call.request.get_param_value("v")));
             }});
    api.Add({"GET", "/r/{id}/assets/{id}", [&links, &directory](Call& call) {
                 auto content = links.Find(call.ids[0]);
                 const MovieVersion* movie = content ? FindVersion(*content, call.ids[1]) : nullptr;
                 if (!movie) return AnswerPage(call, 404, reviewpage::RenderNotFound());
                 AnswerMovie(call, *movie, directory);
             }});
    api.Add({"GET", "/r/{id}/movie", [&links](Call& call) {
                 auto content = links.Find(call.ids[0]);
                 if (!content || content->movies.empty()) {
                     return AnswerPage(call, 404, reviewpage::RenderNotFound());
                 }
                 call.response.set_header("Cache-Control", "no-cache");
                 call.response.set_redirect("/r/" + content->id + "/assets/" +
                                            content->movies.front().front().asset);
             }});
    api.Add({"GET", "/r/{rest}",
             [](Call& call) { AnswerPage(call, 404, reviewpage::RenderNotFound()); }});
    api.Add({"GET", "/healthz", [](Call& call) { call.response.set_content("ok", "text/plain"); }});
}

}  // namespace quilloservice
