#include <sstream>

#include "cli/commands.h"
#include "cli/confinement.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/modeltext.h"
#include "cli/scoringarguments.h"
#include "engine/documents/loadedmodel.h"
#include "engine/messages/visibletext.h"
#include "engine/reports/coefficients.h"
#include "engine/reports/jsontext.h"
#include "engine/reports/modeljson.h"
#include "host/model/scoremodel.h"

namespace MCVelscore_850 {

namespace {

void RefuseTogether(const InspectArguments& arguments)
{
    if (arguments.dump && arguments.json) throw UsageError("--dump and --json don't go together");
    if (arguments.csv && arguments.json) throw UsageError("--csv and --json don't go together");
    if (arguments.coefficients && arguments.dump) {
        throw UsageError("--coefficients and --dump don't go together");
    }
    if (arguments.coefficients) return;
    if (arguments.csv) throw UsageError("--csv has a meaning with --coefficients alone");
    if (arguments.level) throw UsageError("--level has a meaning with --coefficients alone");
}

void PrintCoefficients(const InspectArguments& arguments, const LoadedModel& model)
{
    const double level =
        arguments.level ? LevelOf(*arguments.level) : ScoreModel::kDefaultConfidenceLevel;
    const CoefficientTable table = CoefficientsOf(model.Description(), level);
    if (arguments.csv) {
        PrintOut(CoefficientsCsv(table));
    } else if (arguments.json) {
        PrintOut(JsonText(CoefficientsJson(table)));
    } else {
        PrintOut(CoefficientsText(table));
    }
}

}  // namespace

int RunInspect(const InspectArguments& arguments)
{
    RefuseTogether(arguments);
    const LoadedModel model(arguments.model,
                            ConfinedPlugin(arguments.document, {{arguments.model}, {}}),
                            LoadOptionsOf(arguments.document));
    if (arguments.coefficients) {
        PrintCoefficients(arguments, model);
    } else if (arguments.dump) {
        std::ostringstream text;
        model.Display(text);
        PrintOut(VisibleText(text.str(), LineBreaks::Kept));
    } else if (arguments.json) {
        PrintOut(ModelJson(model));
    } else {
        PrintOut(ModelText(model));
    }
    return kExitDone;
}

}  // namespace MCVelscore_850
