#ifndef VELSCORE_TESTS_ENGINE_AUDITROWS_H
#define VELSCORE_TESTS_ENGINE_AUDITROWS_H

#include <algorithm>
#include <fstream>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/engine/audited.h"

namespace MCVelscore_850 {

// The text of a file of the repository.
inline std::string FileText(const std::string& path)
{
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    EXPECT_FALSE(text.str().empty()) << path;
    return text.str();
}

// The document of a folder of tests/data/cases, or that of a path below tests/data.
inline std::string CaseText(const std::string& name)
{
    const bool isPath = name.ends_with(".pmml");
    return FileText("tests/data/" + (isPath ? name : "cases/" + name + "/model.pmml"));
}

// A text with `to` in the place of `from`, which has to be there. "<a>...</a>" is the first <a>
// with all up to the next </a>.
inline std::string Changed(std::string text, const std::string& from, const std::string& to)
{
    const size_t dots = from.find("...");
    const std::string head = from.substr(0, dots);
    const std::string tail = dots == std::string::npos ? "" : from.substr(dots + 3);
    const size_t at = text.find(head);
    const size_t last = at == std::string::npos ? at : text.find(tail, at + head.size());
    EXPECT_NE(last, std::string::npos) << from;
    if (last != std::string::npos) text.replace(at, last + tail.size() - at, to);
    return text;
}

// What the rules of one table find in the tree of a document, by place, when the adapter is done.
inline std::vector<Finding> FoundIn(const std::string& text, std::span<const AuditRule> table)
{
    const Audited audited(text);
    std::vector<Finding> found;
    for (const Finding& finding : audited.findings.Kept()) {
        const bool isOfTable = std::any_of(table.begin(), table.end(), [&](const AuditRule& rule) {
            return &rule.rule == finding.rule;
        });
        if (isOfTable) found.push_back(finding);
    }
    return found;
}

// A change to a sound document, and the one thing that is found then. Without a rule: nothing is.
struct AuditRow {
    const char* document;  // for CaseText()
    const char* from;
    const char* to;
    const char* rule = "";
    const char* path = "";  // its end
    const char* attribute = "";
    const char* found = "";
    Answer answer = Answer::Fault;
};

inline void ExpectFound(const AuditRow& row, std::span<const AuditRule> table)
{
    SCOPED_TRACE(std::string(row.document) + ": " + row.from + " -> " + row.to);
    const std::vector<Finding> found =
        FoundIn(Changed(CaseText(row.document), row.from, row.to), table);
    std::string names;
    for (const Finding& finding : found) names += std::string(finding.rule->name) + " ";
    const std::string expected = *row.rule == 0 ? "" : std::string(row.rule) + " ";
    ASSERT_EQ(names, expected);
    if (found.empty()) return;
    const Finding& finding = found.front();
    EXPECT_EQ(finding.answer, row.answer);
    EXPECT_TRUE(finding.place.path.ends_with(row.path)) << finding.place.path;
    EXPECT_GT(finding.place.line, 0u);
    EXPECT_GT(finding.place.column, 0u);
    EXPECT_EQ(finding.attribute, row.attribute);
    EXPECT_EQ(finding.found, row.found);
    // Every word in braces was filled.
    EXPECT_EQ(finding.text.find_first_of("{}"), std::string::npos) << finding.text;
    EXPECT_EQ(finding.text.find("\"\""), std::string::npos) << finding.text;
}

}  // namespace MCVelscore_850

#endif
