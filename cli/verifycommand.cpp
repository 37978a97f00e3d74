#include <cmath>
#include <memory>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/confinement.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/outputguard.h"
#include "engine/documents/loadedmodel.h"
#include "engine/documents/verificationsection.h"
#include "engine/messages/explanation.h"
#include "engine/reports/verificationjson.h"
#include "engine/scoring/verification.h"
#include "engine/tables/outputfile.h"
#include "engine/tables/tablesource.h"

namespace MCVelscore_850 {

namespace {

std::string Shown(const std::string& value) { return value.empty() ? "nothing" : value; }

std::string DifferenceText(const Difference& difference)
{
    std::string text =
        fmt::format("record {}, {}: expected {}, found {}", difference.record, difference.field,
                    Shown(difference.expected), Shown(difference.found));
    if (difference.status != 0) {
        const std::string fault = FaultText(difference.faultyField, difference.faultyText);
        text +=
            fmt::format(" (status {}{}{})", difference.status, fault.empty() ? "" : ", ", fault);
    }
    return text + "\n";
}

// The document with the cases of a table as its records.
int Emit(const VerifyArguments& arguments, LoadOptions options, Console& console)
{
    if (arguments.model == "-") {
        throw UsageError("--emit reads the document twice; name its file");
    }
    if (arguments.json) throw UsageError("--emit has no report to write as JSON");
    RefuseOutputOntoDocument(arguments.output, arguments.model);
    const auto plugin =
        ConfinedPlugin(arguments.document, {{arguments.model, arguments.emit}, {arguments.output}});
    LoadedModel model(arguments.model, plugin, options);
    const std::unique_ptr<ByteSource> cases = OpenTable(arguments.emit);
    RefuseOutputOntoTable(arguments.output, arguments.emit);
    const MadeVerification made = MakeVerification(model, *cases, {});
    WriteWholeFile(arguments.output, TextWithVerification(arguments.model, made.table));
    console.Say(fmt::format("{} records written, {} cases without a score left out",
                            made.table.records.size(), made.leftOut));
    return kExitDone;
}

}  // namespace

int RunVerify(const VerifyArguments& arguments, Console& console)
{
    LoadOptions options = LoadOptionsOf(arguments.document);
    options.output = OutputColumns::DocumentIfAny;
    if (!arguments.emit.empty()) return Emit(arguments, options, console);
    if (arguments.output != "-") throw UsageError("-o has a meaning with --emit alone");
    options.verification = true;
    const auto plugin = ConfinedPlugin(arguments.document, {{arguments.model}, {}});
    LoadedModel model(arguments.model, plugin, options);
    const VerificationReport report = Verify(model, *model.Verification());
    if (arguments.json) {
        PrintOut(VerificationJson(model, report));
    } else {
        for (const Difference& difference : report.differences) {
            PrintOut(DifferenceText(difference));
        }
    }
    console.Say(fmt::format("{} records, {} values compared, {} differ", report.records,
                            report.compared, report.differences.size()));
    console.SayFindings(model);
    return report.differences.empty() ? kExitDone : kExitDifferences;
}

}  // namespace MCVelscore_850
