#include "engine/documents/plugin.h"

#include <gtest/gtest.h>

#include "engine/messages/failure.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {
namespace {

int CodeOfOpening(const std::string& file)
{
    try {
        const Plugin plugin(file);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Plugin);
        EXPECT_NE(std::string(failure.what()).find(file), std::string::npos) << failure.what();
        return failure.Code();
    }
    return 0;
}

TEST(Plugin, FileThatIsNotThereIsRefused)
{
    EXPECT_EQ(CodeOfOpening("/nowhere/at/all.so"), kPluginNotLoaded);
}

TEST(Plugin, NameWithoutAFolderIsNotSearchedForInTheSystem)
{
    EXPECT_EQ(CodeOfOpening("libm.so.6"), kPluginNotLoaded);
}

TEST(Plugin, LibraryWithoutTheEntryIsRefused)
{
    EXPECT_EQ(CodeOfOpening(VELSCORE_HOST_LIBRARY), kPluginNoEntry);
}

TEST(Plugin, DefaultLiesInLibBesideTheProgramsFolder)
{
    EXPECT_TRUE(Plugin::DefaultFile().ends_with("/lib/libvelregression850.so"));
}

}  // namespace
}  // namespace MCVelscore_850
