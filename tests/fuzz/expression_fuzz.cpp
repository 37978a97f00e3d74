// Expressions drawn from bytes, in a derived field that a model reads.

#include <vector>

#include "host/expressions/functions.h"
#include "tests/fuzz/documentchecks.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850::fuzz {

namespace {

constexpr size_t kDeepest = 6;
constexpr size_t kMostNodes = 60;

const std::vector<const Function*>& BuiltInFunctions()
{
    static const std::vector<const Function*> functions = [] {
        std::vector<const Function*> all;
        for (const auto topic :
             {ArithmeticFunctions(), DistributionFunctions(), LogicFunctions(), TextFunctions(),
              PatternFunctions(), FormatFunctions(), DateFunctions()}) {
            for (const Function& function : topic) all.push_back(&function);
        }
        return all;
    }();
    return functions;
}

class Drawing {
public:
    explicit Drawing(Choices& choices) : choices_(choices) {}

    std::string Expression(size_t depth = 0)
    {
        ++nodes_;
        const bool isLeaf = depth == kDeepest || nodes_ >= kMostNodes;
        switch (choices_.Below(isLeaf ? 4 : 12)) {
            case 0: return "<FieldRef field=\"x\"/>";
            case 1: return "<FieldRef field=\"sex\"" + MissingTo() + "/>";
            case 2: return Constant();
            case 3: return Number();
            case 4:
                return "<NormDiscrete field=\"sex\" value=\"" + Text() + "\"" + MissingTo() + "/>";
            case 5:
                return "<NormContinuous field=\"x\"" + MissingTo() + "><LinearNorm orig=\"" +
                       Numeral() + "\" norm=\"" + Numeral() + "\"/><LinearNorm orig=\"" +
                       Numeral() + "\" norm=\"" + Numeral() + "\"/></NormContinuous>";
            case 6:
                return "<Discretize field=\"x\" defaultValue=\"" + Text() +
                       "\"><DiscretizeBin binValue=\"" + Text() +
                       "\"><Interval closure=\"closedOpen\" leftMargin=\"" + Numeral() +
                       "\" rightMargin=\"" + Numeral() + "\"/></DiscretizeBin></Discretize>";
            default: return Apply(depth);
        }
    }

private:
    std::string Apply(size_t depth)
    {
        const Function& function = *choices_.OneIn(BuiltInFunctions());
        int count = static_cast<int>(choices_.Below(5));
        if (choices_.Below(8) != 0) {
            count = function.least;
            if (count < function.most && choices_.IsTrue()) ++count;
        }
        std::string element =
            "<Apply function=\"" + Escaped(function.name) + "\"" + MissingTo() + ">";
        for (int i = 0; i < count; ++i) element += Expression(depth + 1);
        return element + "</Apply>";
    }
    std::string MissingTo()
    {
        return choices_.Below(8) == 0 ? " mapMissingTo=\"" + Text() + "\"" : "";
    }
    std::string Constant()
    {
        static constexpr const char* kTypes[] = {"string",  "double", "integer",
                                                 "boolean", "date",   "dateTime"};
        return std::string("<Constant dataType=\"") + choices_.OneOf(kTypes) + "\">" + Text() +
               "</Constant>";
    }
    std::string Number() { return "<Constant dataType=\"double\">" + Numeral() + "</Constant>"; }
    std::string Numeral()
    {
        static constexpr const char* kNumerals[] = {"0",   "1",      "-1",     "2",  "0.5", "3.75",
                                                    "1e9", "-1e300", "1e-300", "12", "100", "0.05"};
        if (choices_.Below(8) != 0) return choices_.OneOf(kNumerals);
        char text[32];
        std::snprintf(text, sizeof text, "%.17g", choices_.Raw<double>());
        return text;
    }
    std::string Text()
    {
        static constexpr const char* kTexts[] = {"f",
                                                 "m",
                                                 "",
                                                 "1",
                                                 "true",
                                                 "%d.%m.%Y",
                                                 "%5.2f",
                                                 "%s%n",
                                                 "2024-02-29",
                                                 "a+",
                                                 "(a|b)*c",
                                                 "[[:space:]",
                                                 "\xC3\xA9",
                                                 "x{1000}",
                                                 "$1",
                                                 "%Y%%%j",
                                                 "1960-01-01T23:59:59"};
        if (choices_.Below(4) != 0) return choices_.OneOf(kTexts);
        std::string plain;
        for (const char c : choices_.Text(choices_.Below(12))) {
            plain += c >= ' ' && c < 127 ? c : '.';
        }
        return Escaped(plain);
    }
    static std::string Escaped(const std::string& text)
    {
        std::string escaped;
        for (const char c : text) {
            switch (c) {
                case '<': escaped += "&lt;"; break;
                case '&': escaped += "&amp;"; break;
                case '"': escaped += "&quot;"; break;
                default: escaped += c;
            }
        }
        return escaped;
    }

    Choices& choices_;
    size_t nodes_ = 0;
};

std::string Drawn(Choices& choices)
{
    static constexpr const char* kTypes[] = {"double", "integer", "string", "boolean", "date"};
    TestModel model;
    const std::string type = choices.OneOf(kTypes);
    const std::string optype = type == "string" || type == "boolean" ? "categorical" : "continuous";
    Drawing drawing(choices);
    model.afterSchema = "<LocalTransformations><DerivedField name=\"d\" dataType=\"" + type +
                        "\" optype=\"" + optype + "\">" + drawing.Expression() +
                        "</DerivedField><DerivedField name=\"z\" dataType=\"double\" "
                        "optype=\"continuous\"><Apply function=\"if\"><Apply "
                        "function=\"isMissing\"><FieldRef field=\"d\"/></Apply><Constant "
                        "dataType=\"double\">-7</Constant><FieldRef field=\"d\"/></Apply>"
                        "</DerivedField></LocalTransformations>";
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
    CheckDocument(Drawn(choices));
    return 0;
}
