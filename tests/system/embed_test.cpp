// Programs of others over the installed library: the examples, and what docs/library.md shows.
// Numbers are those of R.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/installedtree.h"

namespace MCVelscore_850 {
namespace {

std::string DocFolder() { return InstalledTree() + "/share/doc/velscore"; }

// Scores of the first rows of a case, in columns that R has too.
void ExpectScoresOfR(const std::string& csv, size_t rows, const std::string& name)
{
    SCOPED_TRACE(name);
    const CsvText found = ParseCsv(csv);
    const CsvText expected = ParseCsv(ReadFile(DataFile("cases/" + name + "/expected.csv")));
    const auto about = nlohmann::json::parse(ReadFile(DataFile("cases/" + name + "/case.json")));
    ASSERT_EQ(found.rows.size(), rows) << csv;
    ASSERT_GE(expected.rows.size(), rows);
    for (const std::string& column : found.header) {
        const std::vector<std::string> numbers = found.Texts(column);
        const std::vector<std::string> wanted =
            column == "status" ? std::vector<std::string>(rows, "0") : expected.Texts(column);
        ASSERT_GE(wanted.size(), rows) << column;
        for (size_t row = 0; row < rows; ++row) {
            char* end = nullptr;
            const double number = std::strtod(wanted[row].c_str(), &end);
            if (*end != '\0') {
                EXPECT_EQ(numbers[row], wanted[row]);
            } else {
                EXPECT_TRUE(Agrees(std::strtod(numbers[row].c_str(), nullptr), number,
                                   about.at("tolerance")))
                    << column << ", row " << row + 1 << ": " << numbers[row] << ", expected "
                    << wanted[row];
            }
        }
    }
}

class Embed : public testing::Test {
protected:
    Embed()
    {
        std::filesystem::copy(DocFolder() + "/examples", folder_.Path("examples"),
                              std::filesystem::copy_options::recursive);
    }

    // Follows a block of the examples' README, then runs what it built.
    void Build(size_t block, const std::string& programs)
    {
        const std::string here = folder_.Path("examples/embed");
        const std::vector<std::string> blocks = BlocksOf(ReadFile(here + "/README.md"), "sh");
        ASSERT_GT(blocks.size(), block);
        std::string steps = blocks[block];
        const size_t place = steps.find("=DIR");
        if (place != std::string::npos) steps.replace(place + 1, 3, InstalledTree());
        const Finished built = FollowSteps(steps, here);
        ASSERT_EQ(built.exitCode, 0) << built.out << built.err;
        for (const auto& [program, model, name, rows] :
             {std::tuple("cars", "motor-cars", "glm-mtcars-interaction", 3),
              std::tuple("births", "birth-weight", "blr-birthwt-treatment", 4)}) {
            const Finished run =
                FollowSteps(programs + program + " ../" + model + "/model.pmml", here);
            ASSERT_EQ(run.exitCode, 0) << run.err;
            ExpectScoresOfR(run.out, static_cast<size_t>(rows), name);
        }
    }

    ScratchFolder folder_;
};

TEST_F(Embed, ExamplesBuildWithCMake) { Build(0, "build/"); }
TEST_F(Embed, ExamplesBuildWithPkgConfig) { Build(1, "./"); }

TEST_F(Embed, ExamplesHaveAtMostFortyLines)
{
    for (const char* program : {"cars.c", "births.cpp"}) {
        const std::string text = ReadFile(folder_.Path(std::string("examples/embed/") + program));
        EXPECT_LE(std::count(text.begin(), text.end(), '\n'), 40) << program;
        EXPECT_FALSE(text.empty()) << program;
    }
}

TEST_F(Embed, ExamplesTellWhatIsWrong)
{
    Build(1, "./");
    for (const char* program : {"./cars", "./births"}) {
        const Finished run =
            FollowSteps(std::string(program) + " nowhere.pmml", folder_.Path("examples/embed"));
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.err.find("nowhere.pmml can't be read: No such file or directory [269101]"),
                  std::string::npos)
            << run.err;
    }
}

// The blocks of a language on the page as one program: its includes, then the rest in main.
std::string ProgramOf(const std::string& page, const std::string& language)
{
    std::string includes;
    std::string body;
    for (const std::string& block : BlocksOf(page, language)) {
        std::istringstream lines(block);
        for (std::string line; std::getline(lines, line);) {
            (line.rfind("#include", 0) == 0 ? includes : body) += line + "\n";
        }
    }
    return includes + "int main(void)\n{\n" + body + "return 0;\n}\n";
}

class LibraryPage : public Embed {
protected:
    // A fresh folder with the program, and with the examples at the paths that the page has.
    void Write(const std::string& file, const std::string& language)
    {
        folder_.Write(file, ProgramOf(page_, language));
    }
    Finished Follow(const std::string& steps) { return FollowSteps(steps, folder_.Path()); }
    // What the page's programs print: a description, then scores.
    static std::string ScoresIn(const std::string& printed)
    {
        return printed.substr(std::min(printed.size(), printed.find("prediction,")));
    }

    const std::string page_ = ReadFile(DocFolder() + "/docs/library.md");
};

TEST_F(LibraryPage, ItsCppSnippetsAreAProgramForCMake)
{
    Write("program.cpp", "cpp");
    const std::vector<std::string> cmake = BlocksOf(page_, "cmake");
    ASSERT_EQ(cmake.size(), 1U);
    folder_.Write("CMakeLists.txt", cmake[0]);
    const Finished built = Follow("cmake -S . -B build && cmake --build build");
    ASSERT_EQ(built.exitCode, 0) << built.out << built.err;
    const Finished run = Follow("build/program");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.out.find("\"family\""), std::string::npos) << run.out;
    ExpectScoresOfR(ScoresIn(run.out), 6, "glm-mtcars-interaction");
}

TEST_F(LibraryPage, ItsSnippetsBuildWithTheCompilersLine)
{
    Write("program.cpp", "cpp");
    Write("program.c", "c");
    const std::vector<std::string> steps = BlocksOf(page_, "sh");
    ASSERT_EQ(steps.size(), 1U);
    const Finished built = Follow(steps[0]);
    ASSERT_EQ(built.exitCode, 0) << built.out << built.err;
    EXPECT_EQ(Follow("./program").exitCode, 0);
    const Finished inC = Follow("./cprogram");
    EXPECT_EQ(inC.exitCode, 0) << inC.err;
    ExpectScoresOfR(ScoresIn(inC.out), 2, "glm-mtcars-interaction");
}

}  // namespace
}  // namespace MCVelscore_850
