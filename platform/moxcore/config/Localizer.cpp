#include "moxcore/config/Localizer.h"

#include <algorithm>
#include <memory>
#include <mutex>

#include "moxcore/config/TextTables.h"
#include "moxcore/debug/Trace.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/utility/NoDestructor.h"

namespace moxcore::config {
namespace {

using Tables = std::shared_ptr<TextTables const>;

struct InForce {
    std::mutex mutex;
    Tables tables;  // guarded by mutex; null: not read yet
};

/// Never destroyed: texts are still asked for while the process ends.
InForce& Current() {
    static moxcore::utility::NoDestructor<InForce> inForce;
    return *inForce;
}

Tables ReadForUser() {
    auto tables = std::make_shared<TextTables>();
    tables->locales = LocalesOfUser();
    if (!tables->locales.empty()) tables->Add(InstalledTables());
    return tables;
}

/// Without the lock: a sink may ask for texts.
void TraceComplaints(TextTables const& tables) {
    for (auto const& complaint : tables.complaints)
        debug::Trace(1, "moxcore", complaint);
}

Tables Get() {
    auto& inForce = Current();
    std::unique_lock lock(inForce.mutex);
    if (inForce.tables) return inForce.tables;
    auto const tables = inForce.tables = ReadForUser();
    lock.unlock();
    TraceComplaints(*tables);
    return tables;
}

void Put(Tables tables) {
    auto& inForce = Current();
    std::lock_guard lock(inForce.mutex);
    inForce.tables.swap(tables);
}

}  // namespace

string::UTF16String Localizer::Localize(std::string_view keyAndDefault) {
    auto const separator = keyAndDefault.find('=');
    if (separator == std::string_view::npos) return string::UTF8to16(keyAndDefault);

    auto const tables = Get();
    auto const found = tables->texts.find(keyAndDefault.substr(0, separator));
    return found != tables->texts.end() ? found->second
                                        : string::UTF8to16(keyAndDefault.substr(separator + 1));
}

void Localizer::AddDirectory(std::string const& directory) {
    auto const before = Get();
    auto tables = std::make_shared<TextTables>(*before);
    tables->complaints.clear();
    tables->Add(directory);
    TraceComplaints(*tables);
    Put(tables);
}

bool Localizer::Load(std::string const& directory, std::string const& locale) {
    auto tables = std::make_shared<TextTables>();
    if (IsLocaleName(locale)) tables->locales = {locale};
    tables->Add(directory);
    TraceComplaints(*tables);
    bool const isLoaded = !tables->locale.empty() && tables->complaints.empty();
    Put(isLoaded ? tables : std::make_shared<TextTables>());
    return isLoaded;
}

std::string Localizer::LocaleInForce() {
    return Get()->locale;
}

std::string Text(std::string_view keyAndDefault, TextValues const& values) {
    auto const text = string::UTF16to8(Localizer::Localize(keyAndDefault));
    std::string filled;
    std::string_view rest = text;
    for (auto open = rest.find('{'); open != rest.npos; open = rest.find('{')) {
        auto const close = rest.find('}', open);
        if (close == rest.npos) break;
        auto const name = rest.substr(open + 1, close - open - 1);
        auto const value = std::find_if(values.begin(), values.end(),
                                        [name](auto const& each) { return each.first == name; });
        filled += rest.substr(0, open);
        filled += value != values.end() ? std::string_view(value->second)
                                        : rest.substr(open, close + 1 - open);
        rest.remove_prefix(close + 1);
    }
    return filled.append(rest);
}

}  // namespace moxcore::config
