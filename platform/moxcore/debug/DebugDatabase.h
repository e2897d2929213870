#pragma once

#include <map>
#include <mutex>
#include <string>
#include <variant>

#include "moxcore/Export.h"

namespace moxcore::utility {
template <class T>
class NoDestructor;
}

namespace moxcore::debug {

/// Developer switches by name, for the length of the process. Any thread.
class MOXCORE_API DebugDatabase {
public:
    /// The value of an entry.
    using Value = std::variant<bool, long, std::string>;

    /// The one database of the process.
    [[nodiscard]] static DebugDatabase& Instance();

    /// The entry's value, or `fallback` when there is none or it holds another type. T is one of
    /// Value's.
    template <class T>
    [[nodiscard]] T GetEntryAs(std::string const& key, T const& fallback) const {
        std::lock_guard lock(mutex);
        auto const found = entries.find(key);
        if (found == entries.end()) return fallback;
        T const* value = std::get_if<T>(&found->second);
        return value ? *value : fallback;
    }

    /// Makes or replaces the entry.
    void SetEntry(std::string const& key, Value const& value);
    /// Nothing happens when there is none.
    void RemoveEntry(std::string const& key);

private:
    friend class utility::NoDestructor<DebugDatabase>;
    DebugDatabase() = default;

    mutable std::mutex mutex;
    std::map<std::string, Value> entries;  // guarded by mutex
};

}  // namespace moxcore::debug
