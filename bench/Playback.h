#pragma once

#include <simdjson.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "moxcore/async/Future.h"
#include "quillosdk/Transport.h"

namespace bench {

using quillosdk::HttpRequest;
using quillosdk::HttpResponse;
using Answer = moxcore::async::Future<std::shared_ptr<HttpResponse>>;

inline constexpr char kLocations[] = "/v1/";

/// An answer of the service, and the URL that it answers.
struct Recorded {
    std::string url;
    std::string body;
};

/// Answers in the order in which they were asked for.
using Recording = std::vector<Recorded>;

/// Passes requests on and keeps the answers.
class Recorder : public quillosdk::Transport {
public:
    Recorder(std::shared_ptr<quillosdk::Transport> real, Recording& recording)
        : real(std::move(real)), recording(recording) {}

    Answer Send(HttpRequest request) override {
        auto answer = real->Send(request);
        answer.Wait();
        if (answer.Get()->status == 200 && request.url.find(kLocations) != std::string::npos)
            recording.push_back({request.url, answer.Get()->body});
        return answer;
    }

private:
    std::shared_ptr<quillosdk::Transport> real;
    Recording& recording;
};

inline void Require(bool holds, char const* what) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
}

/// Answers from memory what was recorded, in the same order, with a limit that lets everything
/// through. The answers are laid out beforehand: what a transport does is no part of what is
/// measured.
class Player : public quillosdk::Transport {
public:
    explicit Player(Recording const& recording) : recording(recording) {}

    /// Lays out the answers anew, from the first on.
    void Rewind() {
        next = 0;
        answers.clear();
        for (auto const& recorded : recording) {
            auto response = std::make_shared<HttpResponse>();
            response->status = 200;
            response->headers = {{"X-RATELIMIT-LIMIT", "1000000"}, {"X-RATELIMIT-WINDOW", "1000"}};
            response->body.reserve(recorded.body.size() + simdjson::SIMDJSON_PADDING);
            response->body = recorded.body;
            moxcore::async::Promise<std::shared_ptr<HttpResponse>> promise;
            promise.SetValue(std::move(response));
            answers.push_back(promise.GetFuture());
        }
    }

    Answer Send(HttpRequest request) override {
        Require(recording.at(next).url == request.url, "asked for something else this time");
        return std::move(answers[next++]);
    }

private:
    Recording const& recording;
    std::vector<Answer> answers;
    std::size_t next = 0;
};

}  // namespace bench
