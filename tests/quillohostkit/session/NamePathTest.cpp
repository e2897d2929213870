#include "quillohostkit/session/NamePath.h"

#include <gmock/gmock.h>

#include "quillohostkit/process/Failure.h"

namespace quillohostkit {
namespace {

TEST(NamePath, IsSplitAtTheSlashesThatDoNotBelongToAName) {
    struct Row {
        char const* path;
        std::vector<std::string> names;
    };
    Row const rows[] = {
        {"Acme", {"Acme"}},          {"Acme/Films/Spring spot", {"Acme", "Films", "Spring spot"}},
        {R"(A\/B/C)", {"A/B", "C"}}, {R"(A\\/B)", {"A\\", "B"}},
        {R"(A\\\/B)", {"A\\/B"}},    {"撮影/ Día ", {"撮影", " Día "}},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(SplitNamePath(row.path), row.names) << row.path;
        EXPECT_EQ(JoinNamePath(row.names), row.path);
    }
}

TEST(NamePath, RefusesWhatCannotBeAPath) {
    for (char const* path : {"", "/A", "A/", "A//B", "A\\", "A\\nB"})
        EXPECT_THROW(static_cast<void>(SplitNamePath(path)), Failure) << path;
}

}  // namespace
}  // namespace quillohostkit
