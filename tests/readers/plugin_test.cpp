// The plug-in as a host meets it: opened by name, entered through its one symbol.

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <array>
#include <cstdio>
#include <set>

#include "host/documents/basetranslator.h"
#include "host/model/scoremodel.h"
#include "tests/readers/readdocument.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

TEST(Plugin, ExportsItsEntryAndTheStatisticsAndNothingElse)
{
    FILE* symbols = popen("nm -DC --defined-only " VELSCORE_PLUGIN, "r");
    ASSERT_NE(symbols, nullptr);
    std::set<std::string> names;
    std::array<char, 512> line;
    while (fgets(line.data(), line.size(), symbols) != nullptr) {
        std::string text(line.data());
        text.erase(text.find_last_not_of("\n") + 1);
        constexpr size_t kAddressAndType = 19;
        text.erase(0, kAddressAndType);
        // The statistics library's own test lists its functions.
        if (text.rfind("MCMath_850::", 0) == 0 || text.rfind("MCCommon_850::", 0) == 0) continue;
        names.insert(text);
    }
    EXPECT_EQ(pclose(symbols), 0);
    EXPECT_EQ(names, std::set<std::string>{"GiveMyTranslator"});
}

TEST(Plugin, GivesAReaderThatReadsADocument)
{
    void* library = dlopen(VELSCORE_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    using Entry = BaseTranslator* (*)();
    const auto entry = reinterpret_cast<Entry>(dlsym(library, "GiveMyTranslator"));
    ASSERT_NE(entry, nullptr);
    {
        const std::unique_ptr<BaseTranslator> reader(entry());
        ParsedText text(kGeneralLinearDocument);
        const std::unique_ptr<ScoreModel> model(reader->ParseFromTree(text.Get(), "UTF-8"));
        EXPECT_EQ(model->GetModelType(), ScoreModel::TYPE_GLR);
        // A refusal crosses the boundary as what it is.
        ParsedText other(With(kGeneralLinearDocument, "beta=\"1\"", "beta=\"one\""));
        EXPECT_THROW(reader->ParseFromTree(other.Get(), "UTF-8"), VSException);
        // One reader reads one document after another.
        ParsedText again(kLinearDocument);
        const std::unique_ptr<ScoreModel> linear(reader->ParseFromTree(again.Get(), ""));
        EXPECT_EQ(linear->GetModelType(), ScoreModel::TYPE_LR);
    }
    dlclose(library);
}

}  // namespace
}  // namespace MCVelscore_850
