#include "moxcore/config/Localizer.h"

#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>

#include "moxcore/debug/Trace.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/utility/NoDestructor.h"

namespace moxcore::config {
namespace {

using Texts = std::map<std::string, string::UTF16String, std::less<>>;

struct LocaleInForce {
    std::mutex mutex;
    std::shared_ptr<Texts const> texts = std::make_shared<Texts>();  // guarded by mutex
};

/// Never destroyed: texts are still asked for while the process ends.
LocaleInForce& InForce() {
    static moxcore::utility::NoDestructor<LocaleInForce> inForce;
    return *inForce;
}

/// Throws with a sentence that says what is wrong with the file.
Texts ReadTexts(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot be opened");
    auto const parsed = nlohmann::json::parse(file);
    Texts texts;
    for (auto const& [key, text] : parsed.get_ref<nlohmann::json::object_t const&>()) {
        if (!text.is_string()) throw std::runtime_error("the value of \"" + key + "\" is no text");
        texts.emplace(key, string::UTF8to16(text.get_ref<std::string const&>()));
    }
    return texts;
}

/// Keeps a locale taken from the environment from naming a file elsewhere.
bool IsLocaleName(std::string const& locale) {
    constexpr char kAllowed[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_@";
    return !locale.empty() && locale.find_first_not_of(kAllowed) == std::string::npos;
}

}  // namespace

string::UTF16String Localizer::Localize(std::string_view keyAndDefault) {
    auto const separator = keyAndDefault.find('=');
    if (separator == std::string_view::npos) return string::UTF8to16(keyAndDefault);

    std::shared_ptr<Texts const> texts;
    {
        auto& inForce = InForce();
        std::lock_guard lock(inForce.mutex);
        texts = inForce.texts;
    }
    auto const found = texts->find(keyAndDefault.substr(0, separator));
    return found != texts->end() ? found->second
                                 : string::UTF8to16(keyAndDefault.substr(separator + 1));
}

bool Localizer::Load(std::string const& directory, std::string const& locale) {
    auto texts = std::make_shared<Texts const>();
    bool loaded = false;
    if (IsLocaleName(locale)) {
        std::string const path = directory + "/" + locale + ".json";
        try {
            texts = std::make_shared<Texts const>(ReadTexts(path));
            loaded = true;
        } catch (std::exception const& failure) {
            debug::Trace(1, "moxcore", "Texts of \"" + path + "\" not taken: " + failure.what());
        }
    }
    auto& inForce = InForce();
    std::lock_guard lock(inForce.mutex);
    inForce.texts.swap(texts);
    return loaded;
}

}  // namespace moxcore::config
