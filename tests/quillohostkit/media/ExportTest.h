#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "quillohostkit/media/MovieExport.h"
#include "tests/quillohostkit/media/TestMovies.h"
#include "tests/support/MainThreadLoop.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohostkit {

using Words = std::vector<std::string>;

/// A movie of the test's own making, and its export.
class ExportTest : public testing::Test {
protected:
    std::filesystem::path Make(char const* name, Words const& arguments) {
        auto file = directory.Path() / name;
        testmovies::Make(file, arguments);
        return file;
    }
    Movie Probe(std::filesystem::path const& file) {
        MovieProbe const probe(file);
        return loop.Await(probe.Result());
    }
    void Export(std::filesystem::path const& file) {
        MovieExport const exporter(Probe(file), output, [](double) {});
        EXPECT_EQ(loop.Await(exporter.Result()).damage, "");
    }
    /// What ffprobe tells of the export.
    [[nodiscard]] nlohmann::json Exported() const { return testmovies::Describe(output); }
    [[nodiscard]] double ExportedDuration() const {
        return std::stod(Exported()["format"]["duration"].get<std::string>());
    }

    static nlohmann::json StreamOf(nlohmann::json const& described, char const* kind) {
        for (auto const& stream : described["streams"])
            if (stream["codec_type"] == kind) return stream;
        return nlohmann::json::object();
    }

    testsupport::MainThreadLoop loop;
    testsupport::TemporaryDirectory directory;
    std::filesystem::path const output = directory.Path() / "out.mp4";
};

}  // namespace quillohostkit
