#include "tests/fuzz/expressiondrawing.h"

#include <cstdio>
#include <iterator>

#include "host/expressions/functions.h"

namespace MCVelscore_850::fuzz {

namespace {

constexpr size_t kDeepest = 6;
// Under libFuzzer more inputs are worth more than larger ones.
#ifdef VELSCORE_FUZZ_SHARES
constexpr size_t kMostNodes = 16;
#else
constexpr size_t kMostNodes = 60;
#endif

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

    Node Section()
    {
        Node section{"LocalTransformations"};
        if (choices_.Below(4) == 0) section.children.push_back(DefinedFunction());
        const char* const kNames[] = {"d", "e", "g"};
        const size_t count = 1 + choices_.Below(std::size(kNames));
        for (size_t i = 1; i < count; ++i) names_.emplace_back(kNames[i]);
        for (size_t i = 0; i < count; ++i) section.children.push_back(DerivedField(kNames[i]));
        return section;
    }

private:
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    Node DerivedField(const char* name)
    {
        static constexpr const char* kTypes[] = {
            "double", "integer", "string", "boolean", "date", "dateTimeSecondsSince[1960]", "time"};
        const std::string type = choices_.OneOf(kTypes);
        const bool isText = type == "string" || type == "boolean";
        Node field{"DerivedField",
                   {{"name", name},
                    {"optype", isText ? "categorical" : "continuous"},
                    {"dataType", type}}};
        field.children.push_back(Expression());
        return field;
    }
    // f(p, q), of which p may have a type.
    Node DefinedFunction()
    {
        Node function{"DefineFunction", {{"name", "f"}}};
        AddType(function.attributes);
        function.children.push_back({"ParameterField", {{"name", "p"}}});
        AddType(function.children.back().attributes);
        function.children.push_back({"ParameterField", {{"name", "q"}}});
        names_ = {"p", "q"};
        function.children.push_back(Expression());
        names_ = FieldNames();
        hasFunction_ = true;
        return function;
    }
    Node Expression(size_t depth = 0)
    {
        ++nodes_;
        const bool isLeaf = depth == kDeepest || nodes_ >= kMostNodes;
        switch (choices_.Below(isLeaf ? 4 : 14)) {
            case 0:
            case 1: return Field("FieldRef");
            case 2: return Constant();
            case 3: return {"Constant", {{"dataType", "double"}}, {}, Numeral()};
            case 4: {
                Node node = Field("NormDiscrete");
                node.attributes.emplace_back("value", Text());
                return node;
            }
            case 5: return NormContinuous();
            case 6: return Discretize();
            case 7: return MapValues();
            default: return Apply(depth);
        }
    }
    Node Field(const char* tag)
    {
        Node node{tag, {{"field", choices_.OneIn(names_)}}};
        AddText(node.attributes, "mapMissingTo");
        return node;
    }
    Node NormContinuous()
    {
        static constexpr const char* kOutliers[] = {"asIs", "asMissingValues", "asExtremeValues"};
        Node node = Field("NormContinuous");
        if (choices_.IsTrue()) node.attributes.emplace_back("outliers", choices_.OneOf(kOutliers));
        for (size_t i = choices_.Below(2); i < 3; ++i) {
            node.children.push_back({"LinearNorm", {{"orig", Numeral()}, {"norm", Numeral()}}});
        }
        return node;
    }
    Node Discretize()
    {
        static constexpr const char* kClosures[] = {"openOpen", "openClosed", "closedOpen",
                                                    "closedClosed"};
        Node node = Field("Discretize");
        AddText(node.attributes, "defaultValue");
        AddType(node.attributes);
        for (size_t i = choices_.Below(2); i < 2; ++i) {
            Node interval{"Interval", {{"closure", choices_.OneOf(kClosures)}}};
            if (choices_.Below(4) != 0) interval.attributes.emplace_back("leftMargin", Numeral());
            if (choices_.Below(4) != 0) interval.attributes.emplace_back("rightMargin", Numeral());
            node.children.push_back({"DiscretizeBin", {{"binValue", Text()}}, {interval}});
        }
        return node;
    }
    Node MapValues()
    {
        Node node{"MapValues", {{"outputColumn", "out"}}};
        AddText(node.attributes, "mapMissingTo");
        AddText(node.attributes, "defaultValue");
        AddType(node.attributes);
        const size_t columns = 1 + choices_.Below(2);
        for (size_t i = 0; i < columns; ++i) {
            node.children.push_back(
                {"FieldColumnPair",
                 {{"field", choices_.OneIn(names_)}, {"column", i == 0 ? "c0" : "c1"}}});
        }
        Node table{"InlineTable"};
        for (size_t row = choices_.Below(3); row < 3; ++row) {
            Node cells{"row"};
            for (size_t i = 0; i < columns; ++i) {
                cells.children.push_back({i == 0 ? "c0" : "c1", {}, {}, Text()});
            }
            cells.children.push_back({"out", {}, {}, Text()});
            table.children.push_back(std::move(cells));
        }
        node.children.push_back(std::move(table));
        return node;
    }
    Node Apply(size_t depth)
    {
        static constexpr const char* kTreatments[] = {"returnInvalid", "asIs", "asMissing"};
        Node node{"Apply"};
        size_t count = choices_.Below(5);
        if (hasFunction_ && choices_.Below(8) == 0) {
            node.attributes.emplace_back("function", "f");
            if (count != 0) count = 2;
        } else {
            const Function& function = *choices_.OneIn(BuiltInFunctions());
            node.attributes.emplace_back("function", function.name);
            if (choices_.Below(8) != 0) {
                count = static_cast<size_t>(function.least);
                if (function.least < function.most && choices_.IsTrue()) ++count;
            }
        }
        AddText(node.attributes, "mapMissingTo");
        AddText(node.attributes, "defaultValue");
        if (choices_.Below(8) == 0) {
            node.attributes.emplace_back("invalidValueTreatment", choices_.OneOf(kTreatments));
        }
        for (size_t i = 0; i < count; ++i) node.children.push_back(Expression(depth + 1));
        return node;
    }
    Node Constant()
    {
        Node node{"Constant"};
        AddType(node.attributes);
        if (choices_.Below(16) == 0) node.attributes.emplace_back("missing", "true");
        node.text = Text();
        return node;
    }

    void AddText(Attributes& attributes, const char* name)
    {
        if (choices_.Below(8) == 0) attributes.emplace_back(name, Text());
    }
    void AddType(Attributes& attributes)
    {
        static constexpr const char* kTypes[] = {"string",   "double", "integer",
                                                 "boolean",  "date",   "time",
                                                 "dateTime", "float",  "dateDaysSince[1960]"};
        if (choices_.Below(4) != 0) attributes.emplace_back("dataType", choices_.OneOf(kTypes));
    }
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
                                                 "1960-01-01T23:59:59",
                                                 "12:30:45",
                                                 "medium",
                                                 "false"};
        if (choices_.Below(4) != 0) return choices_.OneOf(kTexts);
        std::string plain;
        for (const char c : choices_.Text(choices_.Below(12))) {
            plain += c >= ' ' && c < 127 ? c : '.';
        }
        return plain;
    }
    static std::vector<std::string> FieldNames()
    {
        std::vector<std::string> names{"x", "sex"};
        for (const DrawnField& field : DrawnFields()) names.emplace_back(field.name);
        return names;
    }

    Choices& choices_;
    std::vector<std::string> names_ = FieldNames();  ///< that a FieldRef may have
    bool hasFunction_ = false;
    size_t nodes_ = 0;
};

std::string Escaped(const std::string& text)
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

}  // namespace

std::string XmlOf(const Node& node)
{
    std::string xml = "<" + node.tag;
    for (const auto& [name, value] : node.attributes) {
        xml += " " + name + "=\"" + Escaped(value) + "\"";
    }
    if (node.text.empty() && node.children.empty()) return xml + "/>";
    xml += ">" + Escaped(node.text);
    for (const Node& child : node.children) xml += XmlOf(child);
    return xml + "</" + node.tag + ">";
}

const std::vector<DrawnField>& DrawnFields()
{
    static const std::vector<DrawnField> fields{
        {"n", "continuous", "integer", {}, {"0", "-3", "7", "", "2147483647", "x"}},
        {"b", "categorical", "boolean", {}, {"true", "false", "", "true", "1", "no"}},
        {"o",
         "ordinal",
         "string",
         {"small", "medium", "large"},
         {"small", "large", "medium", "", "huge", "small"}},
        {"day",
         "continuous",
         "date",
         {},
         {"2024-02-29", "1960-01-01", "", "1899-12-31", "9999-12-31", "x"}},
        {"clock",
         "continuous",
         "time",
         {},
         {"00:00:00", "23:59:59", "12:30:45", "", "24:00:00", "x"}},
        {"moment",
         "continuous",
         "dateTime",
         {},
         {"1970-01-01T00:00:00", "2024-02-29T23:59:59", "", "0001-01-01T00:00:00", "x", "2000"}},
    };
    return fields;
}

Node DataFieldOf(const DrawnField& field)
{
    Node node{"DataField",
              {{"name", field.name}, {"optype", field.optype}, {"dataType", field.dataType}}};
    for (const char* value : field.values) node.children.push_back({"Value", {{"value", value}}});
    return node;
}

Node DrawSection(Choices& choices) { return Drawing(choices).Section(); }

}  // namespace MCVelscore_850::fuzz
