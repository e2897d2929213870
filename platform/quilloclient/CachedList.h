#pragma once

#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "moxcore/async/Future.h"
#include "moxcore/classref/InterfaceRef.h"
#include "moxcore/utility/Guid.h"
#include "quilloclient/QuilloLists.h"
#include "quillosdk/FailureText.h"

namespace quillo {

/// Which of the user's lists one is.
enum class ListKind { Accounts, Teams, Projects, Assets };

template <class List>
using RefPromise = moxcore::async::Promise<moxcore::classref::InterfaceRef<List>>;

/// One list of the datastore's together with those who wait for it, whatever it is a list of. By
/// one thread at a time.
class CachedList {
public:
    [[nodiscard]] static std::unique_ptr<CachedList> Create(ListKind kind);

    virtual ~CachedList();

    /// Takes over what the service has answered; whether that is another content than before. A
    /// ResultException (kMalformedAnswer) when it cannot be read; the list then stays as it was.
    [[nodiscard]] virtual bool Take(std::string& body) = 0;

    [[nodiscard]] virtual bool IsAwaited() const = 0;

    /// Complete those who wait.
    virtual void Serve() = 0;
    virtual void Fail(std::exception_ptr const& exception) = 0;

    /// Has `promise` wait, which must be one of this list's kind.
    template <class List>
    void Await(std::shared_ptr<RefPromise<List>> const& promise);
};

/// The path at the service of a list, and what reading it is called in messages.
[[nodiscard]] std::string PathOf(ListKind kind, moxcore::utility::Guid const& parent);
[[nodiscard]] quillosdk::Task TaskOf(ListKind kind);

/// The part that knows the list's type.
template <class List>
class CachedListOf : public CachedList {
public:
    [[nodiscard]] bool IsAwaited() const override { return !promises.empty(); }

    void Serve() override {
        for (auto const& promise : std::exchange(promises, {}))
            promise->SetValue(moxcore::classref::InterfaceRef<List>(list));
    }

    void Fail(std::exception_ptr const& exception) override {
        for (auto const& promise : std::exchange(promises, {}))
            promise->SetException(exception);
    }

    void Add(std::shared_ptr<RefPromise<List>> const& promise) { promises.push_back(promise); }

protected:
    std::shared_ptr<List> const list = std::make_shared<List>();

private:
    std::vector<std::shared_ptr<RefPromise<List>>> promises;
};

template <class List>
void CachedList::Await(std::shared_ptr<RefPromise<List>> const& promise) {
    static_cast<CachedListOf<List>&>(*this).Add(promise);
}

}  // namespace quillo
