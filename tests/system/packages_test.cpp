// The Debian packages: what is in which, and what they say of themselves.

#include <filesystem>
#include <set>

#include <gtest/gtest.h>

#include "tests/system/runcommand.h"

namespace MCVelscore_850 {
namespace {

// The packages, made once and unpacked to folders of their names.
class Packages : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder_ = std::make_unique<ScratchFolder>();
        const std::string steps = "set -eu; cd " + folder_->Path() +
                                  "; cpack --config " VELSCORE_BUILD
                                  "/CPackConfig.cmake -B .\n"
                                  "for package in velscore velscore-dev; do\n"
                                  "  dpkg-deb -x ${package}_*.deb $package\n"
                                  "  dpkg-deb -f ${package}_*.deb >$package.control\n"
                                  "done\n";
        const Finished made = RunProgram({"/bin/sh", "-c", steps});
        ASSERT_EQ(made.exitCode, 0) << made.out << made.err;
    }
    static void TearDownTestSuite() { folder_.reset(); }

    static std::string Path(const std::string& path) { return folder_->Path(path); }
    static std::string Field(const std::string& package, const std::string& field)
    {
        const std::string control = "\n" + ReadFile(Path(package + ".control"));
        const std::string name = "\n" + field + ": ";
        const size_t at = control.find(name);
        if (at == std::string::npos) return "";
        const size_t begin = at + name.size();
        return control.substr(begin, control.find('\n', begin) - begin);
    }
    // What is in a package, folders apart.
    static std::set<std::string> Files(const std::string& package)
    {
        std::set<std::string> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(Path(package))) {
            if (entry.is_directory() && !entry.is_symlink()) continue;
            files.insert(entry.path().lexically_relative(Path(package)));
        }
        return files;
    }

    static std::unique_ptr<ScratchFolder> folder_;
};
std::unique_ptr<ScratchFolder> Packages::folder_;

TEST_F(Packages, RuntimeHasCommandPluginAndLibrary)
{
    const std::set<std::string> files = Files("velscore");
    const std::string version = Field("velscore", "Version");
    for (const std::string& file :
         {std::string("usr/bin/velscore"), std::string("usr/lib/libvelregression850.so"),
          std::string("usr/lib/libvelscore.so.0"), "usr/lib/libvelscore.so." + version,
          std::string("usr/share/man/man1/velscore.1")}) {
        EXPECT_TRUE(files.count(file) == 1) << file;
    }
    for (const std::string& file : files) {
        EXPECT_EQ(file.find("usr/include"), std::string::npos) << file;
    }
}

TEST_F(Packages, DevelopmentHasWhatProgramsAreBuiltWith)
{
    const std::set<std::string> files = Files("velscore-dev");
    for (const char* file :
         {"usr/include/velscore.h", "usr/include/velscore.hpp", "usr/include/velscore_arrow.h",
          "usr/include/velscore/stats/precise.h", "usr/lib/libvelscore.so",
          "usr/lib/libvelscore-stats.a", "usr/lib/pkgconfig/velscore.pc",
          "usr/lib/cmake/velscore/velscoreConfig.cmake"}) {
        EXPECT_TRUE(files.count(file) == 1) << file;
    }
    for (const std::string& file : Files("velscore")) {
        EXPECT_EQ(files.count(file), 0U) << file << " is in both";
    }
}

TEST_F(Packages, SayTheVersionOfTheCommand)
{
    const std::string version = Field("velscore", "Version");
    EXPECT_EQ("velscore " + version + "\n", RunVelscore({"--version"}).out);
    EXPECT_EQ(Field("velscore-dev", "Version"), version);
    EXPECT_EQ(Field("velscore-dev", "Depends"), "velscore (= " + version + ")");
}

TEST_F(Packages, NeedWhatTheLibrariesAreLinkedWith)
{
    const std::string needed = ", " + Field("velscore", "Depends");
    for (const char* library : {"libc6", "libexpat1", "libfmt", "libmd0", "libre2-", "libsimdjson",
                                "libstdc++6", "libtbb12", "libxerces-c3.2", "libzstd1", "zlib1g"}) {
        EXPECT_NE(needed.find(std::string(", ") + library), std::string::npos) << library;
    }
}

// Of what is compiled in; libraries that are loaded come with texts of their own.
TEST_F(Packages, CarryTheCopyrightOfLibrariesThatAreCompiledIn)
{
    const std::string copyright = ReadFile(Path("velscore/usr/share/doc/velscore/copyright"));
    for (const char* library : {"libboost-dev", "libcli11-dev", "libdragonbox-dev", "libfmt-dev",
                                "libsimdjson-dev", "libtbb-dev", "nlohmann-json3-dev"}) {
        const std::string text = ReadFile(std::string("/usr/share/doc/") + library + "/copyright");
        EXPECT_GT(text.size(), 1000U) << library;
        EXPECT_NE(copyright.find(text), std::string::npos) << library;
    }
    EXPECT_EQ(std::filesystem::read_symlink(Path("velscore-dev/usr/share/doc/velscore-dev")),
              "velscore");
}

}  // namespace
}  // namespace MCVelscore_850
