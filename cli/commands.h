#ifndef VELSCORE_CLI_COMMANDS_H
#define VELSCORE_CLI_COMMANDS_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/documentarguments.h"

namespace MCVelscore_850 {

class Console;

/// How tables are written, as text where it still has to be understood.
struct TableArguments {
    std::optional<std::string> delimiter;  ///< a comma without it
    std::string decimal = ".";
    std::vector<std::string> missingTexts;
    std::vector<std::string> mappings;
    bool noHeader = false;
};

/// What was asked of `score`, likewise.
struct ScoreArguments : TableArguments {
    std::string model;
    std::vector<std::string> cases;  ///< empty: standard input
    std::string output = "-";
    std::string policy;  ///< empty: the model's own
    std::optional<std::string> level;
    std::vector<std::string> keep;
    std::vector<std::string> columns;
    std::string outputColumns = "default";
    std::string nameColumn;            ///< empty: none
    std::optional<std::string> times;  ///< of `curve`; those of the baselines without it
    bool wide = false;                 ///< of `curve`
    std::string outDelimiter;          ///< empty: as the input's
    std::string format;                ///< empty: by the output's suffix
    std::string compress;              ///< empty: by the output's suffix
    std::string rejects;               ///< empty: none
    std::optional<int64_t> mostRejects;
    std::string summary;  ///< empty: none
    int digits = 0;       ///< 0: all
    bool progress = false;
    bool resume = false;
    DocumentArguments document;
    bool predictionOnly = false;
    bool strict = false;
    bool quiet = false;
    bool partial = false;
    size_t threads = 0;         ///< 0: as many as the machine has for the command
    std::string explains;       ///< what `explain --long` asks for beside; empty for the others
    std::string baselineTable;  ///< of `explain`; empty: the cases
};

struct ExplainArguments {
    ScoreArguments table;
    bool isLong = false;
    bool json = false;
    std::optional<int64_t> top;
    std::optional<int64_t> mostCases;  ///< of the text
    std::string baseline;              ///< empty: none
};

struct CheckArguments {
    std::vector<std::string> models;
    DocumentArguments document;
    std::string output = "-";
    bool fix = false;
    bool json = false;
    bool strict = false;
};

struct InspectArguments {
    std::string model;
    DocumentArguments document;
    bool dump = false;
    bool json = false;
    bool coefficients = false;
    bool csv = false;
    std::optional<std::string> level;  ///< of their limits
};

struct VerifyArguments {
    std::string model;
    std::string emit;  ///< a table of cases to make records of; empty to verify
    std::string output = "-";
    DocumentArguments document;
    bool json = false;
};

struct ConvertArguments {
    std::string model;
    std::string output = "-";
    DocumentArguments document;
};

struct DiffArguments {
    std::string first;
    std::string second;
    std::string cases;  ///< empty: the models alone
    TableArguments table;
    DocumentArguments document;
    bool json = false;
};

struct HelpArguments {
    std::string code;  ///< empty: every code
};

/// Arguments that can't be understood, or don't go together.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The commands. Each answers the exit code and throws UsageError or the engine's Failure.
int RunScore(const ScoreArguments& arguments, Console& console);
/// Takes what `score` takes but for the output's columns.
int RunCurve(const ScoreArguments& arguments, Console& console);
int RunExplain(const ExplainArguments& arguments, Console& console);
int RunCheck(const CheckArguments& arguments, Console& console);
/// `check --fix`.
int RunFix(const CheckArguments& arguments, Console& console);
int RunInspect(const InspectArguments& arguments);
int RunVerify(const VerifyArguments& arguments, Console& console);
int RunConvert(const ConvertArguments& arguments, Console& console);
int RunDiff(const DiffArguments& arguments, Console& console);
int RunHelp(const HelpArguments& arguments);

}  // namespace MCVelscore_850

#endif
