// What the command opens while it reads a document that points elsewhere, as strace sees it: the
// document, the table, and what every program of the system does; nothing else, and no socket.

#include <set>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

constexpr const char* kStrace = "/usr/bin/strace";

std::string With(const std::string& from, const std::string& to)
{
    std::string text = TestModel().Text();
    const size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

/// A document in which BAIT stands for the place of something that could be read.
struct Pointing {
    const char* name;
    std::string text;
    int exitCode;  ///< 0: it is scored all the same
};

void PrintTo(const Pointing& document, std::ostream* out) { *out << document.name; }

std::string WithDoctype(const std::string& doctype)
{
    return With("<PMML ", "<!DOCTYPE PMML " + doctype + ">\n<PMML ");
}
std::string WithRootAttribute(const std::string& attribute)
{
    return With("version=\"4.4\">",
                "version=\"4.4\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" " +
                    attribute + ">");
}
std::string WithInHeader(const std::string& content)
{
    return With("<Header/>", "<Header>" + content + "</Header>");
}
std::string WithDerivedField(const std::string& expression)
{
    TestModel model;
    model.afterSchema =
        "<LocalTransformations><DerivedField name=\"d\" optype=\"categorical\" "
        "dataType=\"string\">" +
        expression + "</DerivedField></LocalTransformations>";
    return model.Text();
}

std::vector<Pointing> Documents()
{
    const std::string entity = "[<!ENTITY bait SYSTEM \"BAIT\">]";
    std::string used = WithDoctype(entity);
    used.replace(used.find("<Header/>"), 9, "<Header>&bait;</Header>");
    return {
        {"PointsNowhere", TestModel().Text(), 0},
        {"DocumentType", WithDoctype("SYSTEM \"BAIT\""), 2},
        {"PublicDocumentType", WithDoctype("PUBLIC \"-//bait//EN\" \"BAIT\""), 2},
        {"ExternalEntity", WithDoctype(entity), 2},
        {"UsedExternalEntity", used, 2},
        {"ParameterEntity", WithDoctype("[<!ENTITY % bait SYSTEM \"BAIT\"> %bait;]"), 2},
        {"UnparsedEntity",
         WithDoctype("[<!NOTATION n SYSTEM \"BAIT\"><!ENTITY bait SYSTEM \"BAIT\" NDATA n>]"), 2},
        {"SchemaLocation",
         WithRootAttribute("xsi:schemaLocation=\"http://www.dmg.org/PMML-4_4 BAIT\""), 0},
        {"SchemaWithoutNamespace", WithRootAttribute("xsi:noNamespaceSchemaLocation=\"BAIT\""), 0},
        {"BaseAddress", WithRootAttribute("xml:base=\"BAIT\""), 0},
        {"StyleSheet", With("<PMML ", "<?xml-stylesheet type=\"text/xsl\" href=\"BAIT\"?>\n<PMML "),
         0},
        {"Inclusion",
         WithInHeader("<Extension><xi:include xmlns:xi=\"http://www.w3.org/2001/XInclude\" "
                      "href=\"BAIT\" parse=\"text\"/></Extension>"),
         0},
        {"InclusionInThePlaceOfTheModel",
         With("<Header/>",
              "<xi:include xmlns:xi=\"http://www.w3.org/2001/XInclude\" href=\"BAIT\"/>"),
         0},
        {"TableElsewhere",
         WithDerivedField("<MapValues outputColumn=\"out\"><FieldColumnPair field=\"sex\" "
                          "column=\"in\"/><TableLocator><Extension name=\"file\" "
                          "value=\"BAIT\"/></TableLocator></MapValues>"),
         2},
    };
}

using OpenedFiles = testing::TestWithParam<std::tuple<Pointing, std::string>>;

// The calls of a run that open or look at something.
struct Calls {
    Finished run;
    std::set<std::string> paths;
    std::vector<std::string> others;  ///< what has no path: sockets
    size_t programs = 0;
};

Calls CallsOf(const std::vector<std::string>& arguments, const std::string& trace)
{
    std::vector<std::string> command{
        kStrace,       "-f",   "-qq",
        "-s",          "4096", "-e",
        "signal=none", "-e",   "trace=%file,%network,execveat,io_uring_setup",
        "-o",          trace,  VELSCORE_COMMAND};
    command.insert(command.end(), arguments.begin(), arguments.end());
    Calls calls;
    // The leak checker traces too, and two can't.
    calls.run = RunProgram(command, "", {"ASAN_OPTIONS=detect_leaks=0"});
    std::istringstream lines(ReadFile(trace));
    for (std::string line; std::getline(lines, line);) {
        // What began in an earlier line, and what looks at an open file.
        if (line.find("resumed>") != std::string::npos) continue;
        if (line.find("AT_EMPTY_PATH") != std::string::npos) continue;
        // What only names a file: the rules of what may be opened do.
        if (line.find("O_PATH") != std::string::npos) continue;
        if (line.find("execve") != std::string::npos) ++calls.programs;
        const size_t begin = line.find('"');
        if (begin == std::string::npos) {
            calls.others.push_back(line);
        } else {
            calls.paths.insert(line.substr(begin + 1, line.find('"', begin + 1) - begin - 1));
        }
    }
    return calls;
}

// Of the system and of the program itself; what its libraries look at elsewhere, they do always.
bool IsOfTheProgram(const std::string& path)
{
    static const std::string kProgram[] = {"/lib",  "/usr/", "/proc/",
                                           "/sys/", "/dev/", VELSCORE_BUILD "/"};
    for (const std::string& beginning : kProgram) {
        if (path.starts_with(beginning)) return true;
    }
    return false;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

TEST_P(OpenedFiles, AreTheDocumentAndTheTable)
{
    const auto& [pointing, place] = GetParam();
    ASSERT_EQ(::access(kStrace, X_OK), 0) << "install Debian's strace";
    const ScratchFolder folder;
    const std::string trace = folder.Path("trace");
    const Finished traceable = RunProgram({kStrace, "-o", trace, "/bin/true"});
    ASSERT_EQ(traceable.exitCode, 0)
        << "strace can't trace programs here, which this test needs: allow ptrace, in a container "
           "by --cap-add=SYS_PTRACE\n"
        << traceable.err;

    folder.Write("bait", "<bait/>");
    const std::string model = folder.Write(
        "model.pmml", Replaced(pointing.text, "BAIT", Replaced(place, "HERE", folder.Path())));
    const std::string cases = folder.Write("cases.csv", "x,sex\n1,m\n2,f\n");
    ASSERT_EQ(RunProgram({"/bin/sh", "-c", "gzip -n \"$0\"", cases}).exitCode, 0);
    const std::string table = cases + ".gz";
    const std::set<std::string> always = CallsOf({"--version"}, trace).paths;
    Calls calls = CallsOf({"score", model, table}, trace);

    EXPECT_EQ(calls.run.exitCode, pointing.exitCode) << calls.run.err;
    EXPECT_EQ(calls.programs, 1u);
    EXPECT_EQ(calls.others, std::vector<std::string>());
    EXPECT_EQ(calls.paths.erase(model), 1u) << "the trace doesn't tell the document";
    EXPECT_TRUE(calls.paths.erase(table) == 1 || pointing.exitCode != 0);
    std::erase_if(calls.paths, [&](const std::string& path) {
        return IsOfTheProgram(path) || always.contains(path);
    });
    EXPECT_EQ(calls.paths, std::set<std::string>());
}

INSTANTIATE_TEST_SUITE_P(Of, OpenedFiles,
                         testing::Combine(testing::ValuesIn(Documents()),
                                          testing::Values("HERE/bait", "file://HERE/bait", "bait",
                                                          "/etc/passwd",
                                                          "http://127.0.0.1:9/bait")),
                         [](const auto& each) {
                             return std::string(std::get<0>(each.param).name) + "_" +
                                    std::to_string(each.index % 5);
                         });

}  // namespace
}  // namespace MCVelscore_850
