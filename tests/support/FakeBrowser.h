#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "quilloauth/Browser.h"

namespace testsupport {

/// Stands in for the system's browser as long as it lives: keeps the pages that it is asked to
/// show. The test is the user. Any thread.
class FakeBrowser {
public:
    FakeBrowser();
    ~FakeBrowser();
    FakeBrowser(FakeBrowser const&) = delete;
    FakeBrowser& operator=(FakeBrowser const&) = delete;

    /// A page that a sign-in has opened.
    struct Page {
        std::string url;
        quilloauth::BrowserFailure onFailure;

        /// A parameter of its URL, decoded; empty when it has none of this name.
        [[nodiscard]] std::string Parameter(std::string const& name) const;

        /// Where the browser is sent when the user allows it.
        [[nodiscard]] std::string ReturnAddress(std::string const& code) const;
    };

    /// The next page; sleeps until it is opened.
    [[nodiscard]] Page NextPage();

    /// Goes to `url`, which is one of this machine: what it is answered, head and body, or nothing
    /// when nobody listens there any more.
    [[nodiscard]] static std::string Visit(std::string const& url);

private:
    struct Pages {
        std::mutex mutex;
        std::condition_variable opened;
        std::deque<Page> pages;  // guarded by mutex
    };
    std::shared_ptr<Pages> const pages = std::make_shared<Pages>();
};

/// A connection to a port of this machine on which a test says what it likes.
class LocalConnection {
public:
    explicit LocalConnection(int port);
    ~LocalConnection();
    LocalConnection(LocalConnection&& other) noexcept;
    LocalConnection& operator=(LocalConnection&&) = delete;

    [[nodiscard]] bool IsOpen() const { return socket >= 0; }
    void Say(std::string const& text) const;

    /// What comes until the other side closes.
    [[nodiscard]] std::string ReadAll() const;

private:
    int socket;
};

/// The port in "http://127.0.0.1:PORT/...".
[[nodiscard]] int PortOf(std::string const& url);

}  // namespace testsupport
