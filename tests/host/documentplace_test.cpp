#include "host/documents/documentplace.h"

#include <gtest/gtest.h>

#include "dom.h"

namespace MCVelscore_850 {
namespace {

TEST(PlaceOf, NullHasNoPlace)
{
    EXPECT_FALSE(PlaceOf(nullptr).IsKnown());
    EXPECT_EQ(PlaceOf(nullptr).line, 0u);
}

TEST(PlaceOf, PathCountsSiblingsOfTheSameTagFromOne)
{
    const Dom dom("<PMML><H/><M><C/><D/><C/><C id='x'/></M></PMML>");
    auto* m = dom.First("M");
    EXPECT_EQ(PlaceOf(dom.Root()).path, "PMML");
    EXPECT_EQ(PlaceOf(m).path, "PMML/M");
    EXPECT_EQ(PlaceOf(m->getFirstElementChild()).path, "PMML/M/C[1]");
    EXPECT_EQ(PlaceOf(dom.First("D")).path, "PMML/M/D");
    EXPECT_EQ(PlaceOf(m->getLastElementChild()).path, "PMML/M/C[3]");
}

TEST(PlaceOf, LineAndColumnAreThoseThatWereNoted)
{
    const Dom dom("<a><b/></a>");
    EXPECT_EQ(PlaceOf(dom.First("b")).line, 0u);
    EXPECT_EQ(PlaceOf(dom.First("b")).column, 0u);
    NotePlace(dom.First("b"), 12, 34);
    EXPECT_EQ(PlaceOf(dom.First("b")).line, 12u);
    EXPECT_EQ(PlaceOf(dom.First("b")).column, 34u);
    EXPECT_EQ(PlaceOf(dom.Root()).line, 0u);
}

TEST(PlaceOf, LargeLineIsKeptAndALargeColumnCutAtItsLimit)
{
    const Dom dom("<a/>");
    NotePlace(dom.Root(), 268435456, 268435456);  // a document of one byte a line, or of one line
    EXPECT_EQ(PlaceOf(dom.Root()).line, 268435456u);
    EXPECT_EQ(PlaceOf(dom.Root()).column, (1u << 24) - 1);
}

}  // namespace
}  // namespace MCVelscore_850
