#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <stdexcept>

#include "moxcore/async/CancelledException.h"
#include "moxcore/config/Error.h"
#include "moxcore/config/Localizer.h"
#include "moxcore/config/TextTables.h"
#include "moxcore/string/Conversions.h"
#include "tests/support/TemporaryDirectory.h"

using namespace moxcore::config;

namespace {

std::string Localized(std::string const& text) {
    return moxcore::string::UTF16to8(Localizer::Localize(text));
}

class LocalizerTest : public testing::Test {
protected:
    ~LocalizerTest() override { Localizer::Load({}, {}); }

    testsupport::TemporaryDirectory directory;
};

TEST_F(LocalizerTest, TakesTheTextOfTheLocaleOrTheDefault) {
    directory.Write("de.json", R"({"$$$/Vistrel/Share": "Teilen – jetzt", "empty": ""})");
    ASSERT_TRUE(Localizer::Load(directory.Path(), "de"));
    EXPECT_EQ(Localized("$$$/Vistrel/Share=Share"), "Teilen – jetzt");
    EXPECT_EQ(Localized("empty=Default"), "");
    EXPECT_EQ(Localized("$$$/Vistrel/Other=a=b"), "a=b");
    EXPECT_EQ(Localized("$$$/Vistrel/Share"), "$$$/Vistrel/Share");
    EXPECT_EQ(Localized("key="), "");

    try {
        ThrowError(1, "$$$/Vistrel/Share=Share", 0, 0, false, {}, {}, {}, {});
    } catch (ContractViolation const& violation) {
        EXPECT_STREQ(violation.what(), "Teilen – jetzt");
    }
}

TEST_F(LocalizerTest, GoesBackToTheDefaultsWhenTheFileIsNoGood) {
    directory.Write("de.json", R"({"key": "Wert"})");
    directory.Write("cut.json", R"({"key": "Wert)");
    directory.Write("list.json", R"(["key"])");
    directory.Write("number.json", R"({"key": "Wert", "other": 3})");
    directory.Write("latin1.json", "{\"key\": \"Gr\xF6\xDF\x65\"}");
    std::filesystem::create_directory(directory.Path() / "sub");
    for (char const* locale : {"", "missing", "cut", "list", "number", "latin1", "sub/../de"}) {
        ASSERT_TRUE(Localizer::Load(directory.Path(), "de"));
        ASSERT_EQ(Localized("key=default"), "Wert");
        EXPECT_FALSE(Localizer::Load(directory.Path(), locale)) << locale;
        EXPECT_EQ(Localized("key=default"), "default") << locale;
    }
}

TEST_F(LocalizerTest, FillsInValuesAndAddsTablesOfFolders) {
    directory.Write("de.json", R"({"key": "Wert", "both": "Tabelle"})");
    std::filesystem::create_directories(directory.Path() / "part");
    directory.Write("part/de.json", R"({"lines": ["eins {a}", "zwei {b}"]})");
    std::filesystem::create_directories(directory.Path() / "own" / "part");
    directory.Write("own/part/de.json", R"({"both": "eigene"})");
    ASSERT_TRUE(Localizer::Load(directory.Path(), "de"));
    EXPECT_EQ(Localizer::LocaleInForce(), "de");
    // A value is text: what looks like a place in it stays.
    EXPECT_EQ(Text("lines=", {{"a", "{b}"}, {"b", "2"}}), "eins {b}\nzwei 2\n");
    EXPECT_EQ(Text("none={a} {c} {", {{"a", "1"}}), "1 {c} {");
    EXPECT_EQ(Text("both="), "Tabelle");
    Localizer::AddDirectory(directory.Path() / "own");
    EXPECT_EQ(Text("both="), "eigene");
    EXPECT_EQ(Text("key="), "Wert");
}

TEST(TextTables, TakesTheLanguageOfTheEnvironment) {
    struct Case {
        char const *language, *all, *messages, *lang;
        std::vector<std::string> locales;
    };
    std::map<char const*, std::string> before;
    for (char const* const name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"})
        before[name] = std::getenv(name) ? std::getenv(name) : "";
    for (auto const& row :
         std::vector<Case>{{"", "", "", "de_AT.UTF-8", {"de_AT", "de"}},
                           {"", "", "ja_JP", "de_DE", {"ja_JP", "ja"}},
                           {"", "ar", "ja_JP", "de_DE", {"ar"}},
                           {"ar:de", "", "", "ja_JP", {"ar", "de"}},
                           {"ar:en:de", "", "", "ja_JP", {"ar"}},
                           {"de", "", "", "C.UTF-8", {}},
                           {"de", "", "POSIX", "ja", {}},
                           {"", "", "", "", {}},
                           {"", "", "", "en_GB.UTF-8", {}},
                           {"", "", "", "sr_RS.UTF-8@latin", {"sr_RS@latin", "sr_RS", "sr"}},
                           {"", "", "", "../../etc/x", {}}}) {
        setenv("LANGUAGE", row.language, 1);
        setenv("LC_ALL", row.all, 1);
        setenv("LC_MESSAGES", row.messages, 1);
        setenv("LANG", row.lang, 1);
        EXPECT_EQ(LocalesOfUser(), row.locales) << row.language << ' ' << row.lang;
    }
    for (auto const& [name, value] : before)
        setenv(name, value.c_str(), 1);
}

TEST(Error, TellsResultAndMessageOfWhatAFutureFailedWith) {
    struct Case {
        std::exception_ptr exception;
        Result result;
        char const* message;
    };
    for (auto const& [exception, result, message] : std::vector<Case>{
             {nullptr, 0, ""},
             {std::make_exception_ptr(ResultException(-17, "expired folder")), -17,
              "expired folder"},
             {std::make_exception_ptr(moxcore::async::CancelledException()), 0, "cancelled"},
             {std::make_exception_ptr(std::runtime_error("disk full")), kUnknownFailure,
              "disk full"},
             {std::make_exception_ptr(42), kUnknownFailure, "unknown failure"}}) {
        EXPECT_EQ(ExtractResultFromException(exception), result) << message;
        EXPECT_EQ(ExtractMessageFromException(exception), message);
    }
    EXPECT_LT(kUnknownFailure, 0);
}

}  // namespace
