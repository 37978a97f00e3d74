// Notes of runs that ended early: what is written is read again, and nothing else is.

#include "cli/resumenote.h"

#include <filesystem>
#include <functional>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/commands.h"
#include "cli/scoringarguments.h"
#include "engine/documents/loadedmodel.h"
#include "engine/messages/digest.h"
#include "engine/messages/failure.h"
#include "host/messages/messages.h"
#include "tests/cli/inprocess.h"
#include "tests/scratchfolder.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

class Resumed : public testing::Test {
protected:
    Resumed()
        : tables_{folder_.Write("a.csv", "x,sex\n1,f\n"), folder_.Write("b.csv", "x,sex\n2,m\n")},
          model_(folder_.Write("m.pmml", TestModel().Text()),
                 std::make_shared<const Plugin>(VELSCORE_TEST_PLUGIN), {.digest = true})
    {
        arguments_.model = folder_.Path("m.pmml");
        arguments_.cases = tables_;
        arguments_.output = folder_.Path("o.csv");
        folder_.Write("o.csv.part1", "prediction\n3\n");
        folder_.Write("r.csv.part1", "row\n2\n");
    }

    // In the second table, with a bit of everything.
    RunPosition Position() const
    {
        RunPosition position;
        position.tables = {1, 12, 3, 7};
        position.output = {folder_.Path("o.csv.part1"), 13, 2};
        position.rejects = {folder_.Path("r.csv.part1"), 6, 1};
        position.report.scored = 5;
        position.report.rejected = 1;
        position.report.Note(90029, "x", {0, 2, "\xFF?"});
        position.report.Note(90029, "x", {1, 1, std::nullopt});
        position.report.Note(269052, "", {1, 2, "q"});
        position.unlisted = {{"sex", 4, {"F", "\xE9"}, true}, {"x", 0, {}, false}};
        return position;
    }
    std::string NotePath() const { return arguments_.output + ".resume"; }
    bool HasNote() const { return fs::exists(fs::symlink_status(NotePath())); }
    void SaveOne() const
    {
        ResumeNote note(arguments_, tables_, options_, model_);
        note.Save(Position());
        EXPECT_TRUE(note.IsSaved());
    }
    bool Loads(RunPosition& position) const
    {
        return ResumeNote(arguments_, tables_, options_, model_).Load(position);
    }
    bool Loads() const
    {
        RunPosition position;
        return Loads(position);
    }
    // What Load() refuses; empty where nothing is.
    std::string Refusal(const ScoreArguments& arguments, const std::vector<std::string>& tables,
                        bool curves = false) const
    {
        try {
            RunPosition position;
            ScoringOptions options = OptionsOf(arguments);
            options.curves = curves;
            ResumeNote(arguments, tables, options, model_).Load(position);
        } catch (const Failure& refusal) {
            return (refusal.Kind() == FailureKind::Usage ? "" : "not usage: ") +
                   std::string(refusal.what());
        }
        return {};
    }
    std::string Refusal() const { return Refusal(arguments_, tables_); }
    std::string OtherRun(const char* what) const
    {
        return NotePath() + " is of another run: its " + what + " differs";
    }

    const ScratchFolder folder_;
    const std::vector<std::string> tables_;
    const LoadedModel model_;
    ScoreArguments arguments_;
    const ScoringOptions options_ = OptionsOf(arguments_);
};

TEST_F(Resumed, WhatIsSavedIsLoaded)
{
    EXPECT_FALSE(Loads());
    SaveOne();
    RunPosition position;
    ASSERT_TRUE(Loads(position));
    const RunPosition saved = Position();
    EXPECT_EQ(position.tables.table, 1u);
    EXPECT_EQ(position.tables.offset, 12u);
    EXPECT_EQ(position.tables.row, 3);
    EXPECT_EQ(position.tables.rowsBefore, 7);
    for (const auto part : {&RunPosition::output, &RunPosition::rejects}) {
        EXPECT_EQ((position.*part).part, (saved.*part).part);
        EXPECT_EQ((position.*part).bytes, (saved.*part).bytes);
        EXPECT_EQ((position.*part).rows, (saved.*part).rows);
    }
    EXPECT_EQ(position.report.scored, 5);
    EXPECT_EQ(position.report.rejected, 1);
    ASSERT_EQ(position.report.notScored.size(), 2u);
    const auto& [reason, cases] = *position.report.notScored.begin();
    EXPECT_EQ(reason.code, 90029);
    EXPECT_EQ(reason.field, "x");
    EXPECT_EQ(cases.count, 2);
    ASSERT_EQ(cases.first.size(), 2u);
    EXPECT_EQ(cases.first[0].table, 0u);
    EXPECT_EQ(cases.first[0].row, 2);
    EXPECT_EQ(cases.first[0].text, "\xFF?");  // bytes that are no text
    EXPECT_EQ(cases.first[1].table, 1u);
    EXPECT_EQ(cases.first[1].text, std::nullopt);
    ASSERT_EQ(position.unlisted.size(), 2u);
    EXPECT_EQ(position.unlisted[0].column, "sex");
    EXPECT_EQ(position.unlisted[0].count, 4);
    EXPECT_EQ(position.unlisted[0].first, (std::vector<std::string>{"F", "\xE9"}));
    EXPECT_TRUE(position.unlisted[0].oneMayBeReference);
    EXPECT_FALSE(position.unlisted[1].oneMayBeReference);
}

TEST_F(Resumed, ALaterNoteStandsInThePlaceOfALongerOne)
{
    ResumeNote note(arguments_, tables_, options_, model_);
    note.Save(Position());
    RunPosition shorter = Position();
    shorter.report.notScored.clear();
    shorter.unlisted.clear();
    shorter.report.scored = 6;
    note.Save(shorter);
    RunPosition position;
    ASSERT_TRUE(Loads(position));
    EXPECT_EQ(position.report.scored, 6);
    EXPECT_TRUE(position.report.notScored.empty());
}

TEST_F(Resumed, ANoteGoesAwayWithItsRun)
{
    ResumeNote note(arguments_, tables_, options_, model_);
    note.TakeBack();
    EXPECT_FALSE(HasNote());
    note.Save(Position());
    EXPECT_TRUE(HasNote());
    note.TakeBack();
    EXPECT_FALSE(HasNote());
    EXPECT_FALSE(note.IsSaved());
    // That of an earlier run stays where this one has written none.
    SaveOne();
    note.TakeBack();
    EXPECT_TRUE(HasNote());
    note.Remove();
    EXPECT_FALSE(HasNote());
}

TEST_F(Resumed, ANoteWhoseFilesHaveTheirNamesAlreadyIsNone)
{
    SaveOne();
    fs::remove(folder_.Path("r.csv.part1"));
    EXPECT_FALSE(Loads());
    folder_.Write("r.csv.part1", "");
    EXPECT_TRUE(Loads());
    fs::remove(folder_.Path("o.csv.part1"));
    EXPECT_FALSE(Loads());
}

struct Changed {
    const char* about;
    std::function<void(ScoreArguments&)> change;
};

TEST_F(Resumed, EachOptionThatTheOutputDependsOnMakesAnotherRun)
{
    SaveOne();
    const Changed kChanged[] = {
        {"policy", [](auto& of) { of.policy = "sysmis"; }},
        {"keep", [](auto& of) { of.keep = {"x"}; }},
        {"columns", [](auto& of) { of.columns = {"status"}; }},
        {"output", [](auto& of) { of.outputColumns = "document"; }},
        {"name-column", [](auto& of) { of.nameColumn = "file"; }},
        {"delimiter", [](auto& of) { of.delimiter = ";"; }},
        {"out-delimiter", [](auto& of) { of.outDelimiter = ";"; }},
        {"decimal", [](auto& of) { of.decimal = ","; }},
        {"format", [](auto& of) { of.format = "jsonl"; }},
        {"compress", [](auto& of) { of.compress = "gzip"; }},
        {"map", [](auto& of) { of.mappings = {"x=X"}; }},
        {"na", [](auto& of) { of.missingTexts = {"-9"}; }},
        {"rejects", [](auto& of) { of.rejects = "r.csv"; }},
        {"digits", [](auto& of) { of.digits = 4; }},
        {"no-header", [](auto& of) { of.noHeader = true; }},
        {"prediction-only", [](auto& of) { of.predictionOnly = true; }},
        {"as-is", [](auto& of) { of.document.asIs = true; }},
        {"level", [](auto& of) { of.level = "0.9"; }},
        {"times", [](auto& of) { of.times = "1"; }},
        {"wide", [](auto& of) { of.wide = true; }},
        {"explains", [](auto& of) { of.explains = "top 1"; }},
    };
    for (const Changed& changed : kChanged) {
        ScoreArguments other = arguments_;
        changed.change(other);
        EXPECT_EQ(Refusal(other, tables_), OtherRun("options")) << changed.about;
    }
    EXPECT_EQ(Refusal(arguments_, tables_, true), OtherRun("options")) << "curves";
    EXPECT_EQ(Refusal(), "");
}

TEST_F(Resumed, OptionsThatTheOutputDoesNotDependOnMayChange)
{
    arguments_.rejects = folder_.Path("r.csv");
    SaveOne();
    ScoreArguments other = arguments_;
    other.threads = 7;
    other.mostRejects = 3;
    other.quiet = other.strict = other.progress = other.partial = true;
    other.summary = "s.json";
    other.delimiter = ",";  // what it is without
    EXPECT_EQ(Refusal(other, tables_), "");
}

TEST_F(Resumed, OtherTablesMakeAnotherRun)
{
    SaveOne();
    EXPECT_EQ(Refusal(arguments_, {tables_[1], tables_[0]}), OtherRun("tables"));
    EXPECT_EQ(Refusal(arguments_, {tables_[0]}), OtherRun("tables"));
    folder_.Write("a.csv", "x,sex\n1,m\n");  // as long as before
    EXPECT_EQ(Refusal(), OtherRun("tables"));
}

// The first and the last 64 KiB tell a large table from another.
TEST_F(Resumed, LargeTablesAreToldByBothEnds)
{
    std::string text(200'000, ' ');
    const std::vector<std::string> large{folder_.Write("large.csv", text)};
    ResumeNote note(arguments_, large, options_, model_);
    note.Save(Position());
    for (const auto& [place, isTold] : std::map<size_t, bool>{{0, true},
                                                              {65'535, true},
                                                              {100'000, false},
                                                              {200'000 - 65'536, true},
                                                              {199'999, true}}) {
        std::string other = text;
        other[place] = 'x';
        folder_.Write("large.csv", other);
        EXPECT_EQ(Refusal(arguments_, large), isTold ? OtherRun("tables") : "") << place;
    }
    folder_.Write("large.csv", text + " ");
    EXPECT_EQ(Refusal(arguments_, large), OtherRun("tables"));
}

TEST_F(Resumed, AnotherDocumentMakesAnotherRun)
{
    SaveOne();
    TestModel other;
    other.xBeta = "3";
    const LoadedModel model(folder_.Write("other.pmml", other.Text()),
                            std::make_shared<const Plugin>(VELSCORE_TEST_PLUGIN), {.digest = true});
    RunPosition position;
    try {
        ResumeNote(arguments_, tables_, options_, model).Load(position);
        FAIL();
    } catch (const Failure& refusal) {
        EXPECT_EQ(refusal.what(), OtherRun("document"));
    }
}

TEST_F(Resumed, ATableThatIsNotThereIsAFailureOfTheCases)
{
    try {
        const ResumeNote note(arguments_, {folder_.Path("none.csv")}, options_, model_);
        FAIL();
    } catch (const Failure& refusal) {
        EXPECT_EQ(refusal.Kind(), FailureKind::Cases);
        EXPECT_EQ(refusal.Code(), kCasesNotRead);
    }
}

// What a file of --map holds counts, not its name.
TEST_F(Resumed, AnotherFileOfColumnsMakesAnotherRun)
{
    arguments_.mappings = {"@" + folder_.Write("map.txt", "x=X\n")};
    ResumeNote note(arguments_, tables_, OptionsOf(arguments_), model_);
    note.Save(Position());
    EXPECT_EQ(Refusal(), "");
    folder_.Write("map.txt", "x=Y\n");
    EXPECT_EQ(Refusal(), OtherRun("options"));
    arguments_.mappings = {"x=X"};
    EXPECT_EQ(Refusal(), "");
}

TEST_F(Resumed, AnotherPluginMakesAnotherRun)
{
    SaveOne();
    arguments_.document.plugin = folder_.Write("plugin.so", "one");
    EXPECT_EQ(Refusal(), OtherRun("plug-in"));
    SaveOne();
    EXPECT_EQ(Refusal(), "");
    folder_.Write("plugin.so", "two");
    EXPECT_EQ(Refusal(), OtherRun("plug-in"));
}

TEST_F(Resumed, AnotherTableOfTheBaselineMakesAnotherRun)
{
    arguments_.baselineTable = folder_.Write("baseline.csv", "x,sex\n1,f\n");
    SaveOne();
    EXPECT_EQ(Refusal(), "");
    folder_.Write("baseline.csv", "x,sex\n2,f\n");
    EXPECT_EQ(Refusal(), OtherRun("tables"));
}

// Names and texts may be in any encoding: each byte is kept.
TEST_F(Resumed, BytesOfAnyEncodingAreKept)
{
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/') bytes += static_cast<char>(byte);
    }
    arguments_.keep = {bytes};
    arguments_.mappings = {"caf\xE9=" + bytes};
    const std::vector<std::string> tables{folder_.Write("caf\xE9.csv", "x,sex\n1,f\n")};
    RunPosition saved = Position();
    saved.output.part = folder_.Write(bytes, "prediction\n3\n");
    saved.report.Note(90029, bytes, {0, 9, bytes});
    saved.unlisted = {{bytes, 1, {bytes}, false}};
    const ScoringOptions options = OptionsOf(arguments_);
    {
        ResumeNote note(arguments_, tables, options, model_);
        note.Save(saved);
    }
    RunPosition position;
    ASSERT_TRUE(ResumeNote(arguments_, tables, options, model_).Load(position));
    EXPECT_EQ(position.output.part, saved.output.part);
    EXPECT_EQ(position.unlisted[0].column, bytes);
    EXPECT_EQ(position.unlisted[0].first, std::vector{bytes});
    ASSERT_EQ(position.report.notScored.count(NotScoredReason{90029, bytes}), 1u);
    EXPECT_EQ(position.report.notScored.at({90029, bytes}).first[0].text, bytes);
    arguments_.keep = {bytes + "\xE9"};
    EXPECT_EQ(Refusal(arguments_, tables), OtherRun("options"));
}

// A note as it stands in the file, changed.
struct Spoilt {
    const char* about;
    std::function<void(Json&)> spoil;
    const char* what;
};

TEST_F(Resumed, NotesOfAnotherVersionOrFormAreRefused)
{
    SaveOne();
    const std::string line = ReadFile(NotePath());
    const Json saved = Json::parse(line.substr(0, line.rfind(' ')));
    const Spoilt kSpoilt[] = {
        {"version", [](Json& note) { note["run"]["version"] = "0.0"; }, "version"},
        {"no version", [](Json& note) { note["run"].erase("version"); }, "version"},
        {"no options", [](Json& note) { note["run"].erase("options"); }, "options"},
        {"no run", [](Json& note) { note.erase("run"); }, "form"},
        {"a run that is a number", [](Json& note) { note["run"] = 1; }, "version"},
        {"no position", [](Json& note) { note.erase("position"); }, "form"},
        {"a position that is a list", [](Json& note) { note["position"] = Json::array(); }, "form"},
        {"no report", [](Json& note) { note["position"].erase("report"); }, "form"},
        {"a text for a number", [](Json& note) { note["position"]["row"] = "1"; }, "form"},
        {"no file", [](Json& note) { note["position"]["output"].erase("part"); }, "form"},
    };
    for (const Spoilt& spoilt : kSpoilt) {
        Json note = saved;
        spoilt.spoil(note);
        const std::string text = note.dump();
        folder_.Write("o.csv.resume", text + " " + Sha256Of(text) + "\n");
        EXPECT_EQ(Refusal(), OtherRun(spoilt.what)) << spoilt.about;
    }
    for (const char* text : {"{}\n", "[]\n", "null\n", "not JSON\n", "\n", "{\"run\":\n"}) {
        folder_.Write("o.csv.resume", text);
        EXPECT_EQ(Refusal(), OtherRun("form")) << text;
    }
    // One that was written over in part, though it may read well: in its digits alone it shows.
    const size_t digit = line.find("\"offset\":12") + 9;
    std::string torn = line;
    torn[digit] = '9';
    for (const std::string& text : {torn, saved.dump() + "\n", saved.dump() + " \n"}) {
        folder_.Write("o.csv.resume", text);
        EXPECT_EQ(Refusal(), OtherRun("form")) << text;
    }
    // A first note that was cut off: there is no run to go on with.
    for (const std::string& text : {std::string(), saved.dump()}) {
        folder_.Write("o.csv.resume", text);
        EXPECT_FALSE(Loads()) << text;
    }
}

TEST_F(Resumed, ANoteThatCannotBeReadIsAFailure)
{
    fs::create_symlink("o.csv.resume", NotePath());
    EXPECT_NE(Refusal().find("not usage: " + NotePath() + " can't be read"), std::string::npos)
        << Refusal();
}

// It is the next run's loss alone.
TEST_F(Resumed, ANoteThatCannotBeWrittenIsLetGo)
{
    // No link is followed, wherever it leads.
    fs::create_symlink(folder_.Write("target", "kept"), NotePath());
    {
        ResumeNote note(arguments_, tables_, options_, model_);
        note.Save(Position());
        EXPECT_FALSE(note.IsSaved());
        EXPECT_EQ(ReadFile(folder_.Path("target")), "kept");
    }
    fs::remove(NotePath());
    // What can't be written at a place, as a pipe can't, is removed.
    ASSERT_EQ(::mkfifo(NotePath().c_str(), 0600), 0);
    const int reader = ::open(NotePath().c_str(), O_RDONLY | O_NONBLOCK);
    ResumeNote note(arguments_, tables_, options_, model_);
    note.Save(Position());
    EXPECT_FALSE(note.IsSaved());
    EXPECT_FALSE(HasNote());
    ::close(reader);
}

}  // namespace
}  // namespace MCVelscore_850
