#include <memory>

#include "service/base/ApiError.h"
#include "service/base/File.h"
#include "service/base/Text.h"
#include "service/http/ByteRange.h"
#include "service/http/Preconditions.h"
#include "service/pages/ErrorPage.h"
#include "service/pages/ReviewPage.h"
#include "service/routes/Api.h"
#include "service/routes/Call.h"
#include "service/routes/Routes.h"
#include "service/store/DataDirectory.h"
#include "service/store/ReviewLinks.h"

namespace quilloservice {

namespace {

void RespondWithPage(Call& call, int status, std::string const& html) {
    call.response.SetHeader("Cache-Control", "no-cache");
    call.RespondWithPage(status, html, reviewpage::SecurityPolicy());
}

/// Always a page, whatever the header Accept prefers: links are opened in browsers.
void RespondNotFound(Call& call) {
    call.response.SetHeader("Cache-Control", "no-cache");
    call.RespondWithPage(404,
                         errorpage::Render(404,
                                           "This link does not lead to a movie. Check that it was "
                                           "copied whole, or ask its sender for a new one."),
                         errorpage::SecurityPolicy());
}

/// The media type for a movie's response. Types other than video and audio are replaced, so that no
/// upload is shown as a page.
std::string SafeMediaType(std::string const& mediaType) {
    bool media = mediaType.starts_with("video/") || mediaType.starts_with("audio/");
    return media ? mediaType : "application/octet-stream";
}

MovieVersion const* FindVersion(ReviewContent const& content, FileId const& asset) {
    for (auto const& versions : content.movies) {
        for (MovieVersion const& version : versions) {
            if (version.asset == asset) return &version;
        }
    }
    return nullptr;
}

/// A part of a movie's file.
class FilePart : public http::Content {
public:
    FilePart(std::string const& path, ByteRange const& part)
        : file(path, File::Mode::Read), offset(part.first) {}

    std::size_t Read(char* buffer, std::size_t size) override {
        std::size_t count = file.ReadAt(offset, buffer, size);
        offset += static_cast<std::int64_t>(count);
        return count;
    }

private:
    File file;
    std::int64_t offset;
};

void RespondWithMovie(Call& call, MovieVersion const& movie, DataDirectory const& directory) {
    http::Response& response = call.response;
    std::string tag = "\"" + movie.sha256 + "\"";
    response.SetHeader("ETag", tag);
    response.SetHeader("Cache-Control", "private, max-age=3600");
    switch (http::CheckPreconditions(call.request, tag)) {
        case http::Precondition::NotModified:
            response.status = 304;
            return;
        case http::Precondition::Failed:
            throw ApiError(412, "precondition_failed", "The movie is another one.");
        case http::Precondition::Holds:
            break;
    }
    response.SetHeader("Accept-Ranges", "bytes");
    response.SetHeader("X-Content-Type-Options", "nosniff");
    response.SetHeader("Content-Security-Policy", "default-src 'none'; sandbox");
    RangeRequest range;
    if (auto header = http::ApplicableRange(call.request, tag)) {
        range = ParseRange(*header, movie.bytes);
    }
    std::string size = std::to_string(movie.bytes);
    if (range.unsatisfiable) {
        response.SetHeader("Content-Range", "bytes */" + size);
        throw ApiError(416, "range_not_satisfiable", "The movie has " + size + " bytes.");
    }
    ByteRange part = range.part.value_or(ByteRange{0, movie.bytes});
    response.status = range.part ? 206 : 200;
    if (range.part) {
        response.SetHeader("Content-Range", "bytes " + std::to_string(part.first) + "-" +
                                                std::to_string(part.first + part.length - 1) + "/" +
                                                size);
    }
    std::string disposition = call.request.HasParameter("download") ? "attachment" : "inline";
    response.SetHeader("Content-Disposition",
                       disposition + "; filename*=UTF-8''" + PercentEncode(movie.name));

    response.SetHeader("Content-Type", SafeMediaType(movie.mediaType));
    response.content = std::make_unique<FilePart>(directory.MoviePath(movie.asset), part);
    response.contentLength = part.length;
}

}  // namespace

void AddReviewerRoutes(Api& api, ReviewLinks const& links, DataDirectory const& directory) {
    api.Add({"GET", "/r/{id}", [&links](Call& call) {
                 auto content = links.Find(call.GetId<LinkId>(0));
                 if (!content) return RespondNotFound(call);
                 auto chosen = FileId::ParseOrNil(call.request.Parameter("v"));
                 RespondWithPage(call, 200, reviewpage::Render(*content, chosen));
             }});
    api.Add({"GET", "/r/{id}/assets/{id}", [&links, &directory](Call& call) {
                 auto content = links.Find(call.GetId<LinkId>(0));
                 MovieVersion const* movie =
                     content ? FindVersion(*content, call.GetId<FileId>(1)) : nullptr;
                 if (!movie) return RespondNotFound(call);
                 RespondWithMovie(call, *movie, directory);
             }});
    api.Add({"GET", "/r/{id}/movie", [&links](Call& call) {
                 auto content = links.Find(call.GetId<LinkId>(0));
                 if (!content || content->movies.empty()) {
                     return RespondNotFound(call);
                 }
                 call.response.SetHeader("Cache-Control", "no-cache");
                 FileId const& newest = content->movies.front().front().asset;
                 call.response.Redirect(
                     302, "/r/" + content->id.GetText() + "/assets/" + newest.GetText());
             }});
    api.Add({"GET", "/r/{rest}", [](Call& call) { RespondNotFound(call); }});
}

}  // namespace quilloservice
