// Expressions drawn from bytes as those of expression are, in a whole document whose model reads
// the first of the derived fields.

#include "tests/fuzz/documentchecks.h"
#include "tests/fuzz/expressiondrawing.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850::fuzz {

namespace {

std::string DocumentOf(const Node& section)
{
    TestModel model;
    for (const DrawnField& field : DrawnFields()) {
        model.sexField += XmlOf(DataFieldOf(field));
        model.sexMining += XmlOf({"MiningField", {{"name", field.name}}});
    }
    // What a covariate is taken from has a number for every case.
    model.afterSchema = XmlOf(section);
    const std::string end = "</LocalTransformations>";
    model.afterSchema.insert(
        model.afterSchema.size() - end.size(),
        "<DerivedField name=\"z\" dataType=\"double\" optype=\"continuous\"><Apply function=\"if\">"
        "<Apply function=\"isMissing\"><FieldRef field=\"d\"/></Apply><Constant "
        "dataType=\"double\">-7</Constant><FieldRef field=\"d\"/></Apply></DerivedField>");
    std::string text = model.Text();
    for (const std::string part :
         {"<CovariateList><Predictor name=\"x\"/>", "value=\"1\" predictorName=\"x\""}) {
        std::string changed = part;
        changed.replace(changed.find("\"x\""), 3, "\"z\"");
        text.replace(text.find(part), part.size(), changed);
    }
    return text;
}

}  // namespace

}  // namespace MCVelscore_850::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    using namespace MCVelscore_850::fuzz;
    Choices choices(TextOf(bytes, size));
    CheckDocument(DocumentOf(DrawSection(choices)));
    return 0;
}
