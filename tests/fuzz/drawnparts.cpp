#include "tests/fuzz/drawnparts.h"

#include <algorithm>

namespace MCVelscore_850::fuzz {

namespace {

using Attributes = std::vector<std::pair<std::string, std::string>>;

}  // namespace

const std::vector<Field>& Fields()
{
    static const std::vector<Field> fields = [] {
        std::vector<Field> all{
            {"x", "continuous", "double", {}, kNumberCells},
            {"sex", "categorical", "string", {"f", "m"}},
            {"z", "continuous", "double", {}, kNumberCells},
            {"h", "continuous", "float", {}, kNumberCells},
            {"k", "categorical", "integer", {"1", "2", "3"}},
            {"r", "categorical", "double", {"0.5", "1", "2.50"}},
            {"v", "categorical", "string", {"a", "b b", "c", "d"}},
            {"w", "categorical", "string", {}, {"a", "b", "c"}},
            {"j", "categorical", "integer", {}, {"1", "2", "03"}},
            {"u", "categorical", "date", kDateCells},
            {"q", "continuous", "dateDaysSince[1970]", {}, {"17", "-3", "1970-01-05"}},
            {"p", "ordinal", "integer", {"3", "2", "1"}},
        };
        for (const DrawnField& drawn : DrawnFields()) {
            if (drawn.dataType == std::string_view("boolean")) {
                all.push_back({drawn.name, drawn.optype, drawn.dataType, {}, {"true", "false"}});
                continue;
            }
            all.push_back({drawn.name,
                           drawn.optype,
                           drawn.dataType,
                           {drawn.values.begin(), drawn.values.end()},
                           {drawn.cells.begin(), drawn.cells.end()}});
        }
        return all;
    }();
    return fields;
}

DocumentDrawing::DocumentDrawing(unsigned seed) : draws_(seed)
{
    static constexpr const char* kVersions[] = {"3.0", "3.1", "3.2", "4.0", "4.1", "4.2", "4.3"};
    version_ = draws_.Seldom(4) ? draws_.OneIn(kVersions) : "4.4";
}

bool DocumentDrawing::IsPredictor(const Field& field) const
{
    return std::any_of(predictors_.begin(), predictors_.end(),
                       [&](const Field& other) { return other.name == field.name; });
}

void DocumentDrawing::DrawFields(Outcome outcome)
{
    constexpr size_t kMost = 4;
    target_ = TargetOf(outcome);
    for (size_t i = draws_.Below(kMost); i < kMost; ++i) {
        const Field& field = draws_.OneIn(Fields());
        // A factor of dates is refused by most models.
        if (field.dataType == "date" && !field.IsCovariate() && !draws_.Seldom(4)) continue;
        if (!IsPredictor(field)) predictors_.push_back(field);
    }
}

Field DocumentDrawing::TargetOf(Outcome outcome)
{
    switch (outcome) {
        case Outcome::Number: {
            static constexpr const char* kTypes[] = {"double", "double", "integer", "float"};
            return {std::string(kTarget), "continuous", draws_.OneIn(kTypes)};
        }
        case Outcome::Event: return {std::string(kTarget), "continuous", "double"};
        default: break;
    }
    static const std::vector<Field> kKinds{
        {"", "", "string", {"a", "b", "c", "d"}},   {"", "", "string", {"a", "b", "c", "d"}},
        {"", "", "string", {"no", "yes", "maybe"}}, {"", "", "integer", {"0", "1", "2"}},
        {"", "", "double", {"1", "0.0", "2.5"}},    {"", "", "boolean", {"false", "true"}},
        {"", "", "float", {"1.0", "2", "3"}},       {"", "", "date", kDateCells},
    };
    // Dates, the last ones, are refused as categories of most models.
    Field target = kKinds[draws_.Below(kKinds.size() - (draws_.Seldom(8) ? 0 : 1))];
    target.name = kTarget;
    target.optype = outcome == Outcome::OrderedCategories ? "ordinal" : "categorical";
    if (outcome == Outcome::TwoCategories) target.values.resize(2);
    if (outcome != Outcome::TwoCategories && draws_.Seldom(3)) {
        target.values.resize(1 + draws_.Below(target.values.size()));
    }
    if (draws_.Seldom(12)) target.optype = draws_.Seldom(2) ? "ordinal" : "continuous";
    return target;
}

std::string DocumentDrawing::Published(Node model)
{
    Node dictionary{"DataDictionary"};
    for (const Field& field : fields_) dictionary.children.push_back(DataField(field));
    Node root{"PMML", {{"version", version_}}};
    root.children.push_back(std::move(dictionary));
    if (transformations_) root.children.push_back(*transformations_);
    root.children.push_back(std::move(model));
    return XmlOf(root);
}

Node DocumentDrawing::DataField(const Field& field)
{
    Node node{"DataField",
              {{"name", field.name}, {"optype", field.optype}, {"dataType", field.dataType}}};
    if (field.IsCovariate() && field.dataType != "boolean" && draws_.Seldom(8)) {
        static constexpr const char* kClosures[] = {"openOpen", "openClosed", "closedOpen",
                                                    "closedClosed"};
        Node interval{"Interval", {{"closure", draws_.OneIn(kClosures)}}};
        if (!draws_.Seldom(4)) interval.attributes.emplace_back("leftMargin", "0");
        if (!draws_.Seldom(4)) interval.attributes.emplace_back("rightMargin", "50");
        node.children.push_back(std::move(interval));
    }
    for (const std::string& value : field.values) {
        node.children.push_back({"Value", {{"value", value}}});
        if (draws_.Seldom(16)) {
            node.children.back().attributes.emplace_back("displayValue", "the " + value);
        }
    }
    if (draws_.Seldom(8)) {
        const bool isNumber = field.dataType == "double" || field.dataType == "integer";
        const bool isMissing = !isNumber || draws_.Seldom(2);
        node.children.push_back({"Value",
                                 {{"value", isNumber           ? "-9"
                                            : draws_.Seldom(2) ? "NA"
                                                               : ""},
                                  {"property", isMissing ? "missing" : "invalid"}}});
    }
    if (draws_.Seldom(12)) {
        node.children.push_back(
            {"Extension",
             {{"extender", "velscore"}, {"name", "unlistedCategories"}, {"value", "accept"}}});
    }
    return node;
}

Node DocumentDrawing::MiningSchema()
{
    Node schema{"MiningSchema"};
    fields_.push_back(target_);
    schema.children.push_back(
        {"MiningField",
         {{"name", target_.name}, {"usageType", draws_.Seldom(6) ? "predicted" : "target"}}});
    for (const Field& field : predictors_) {
        if (field.isDerived) continue;
        fields_.push_back(field);
        schema.children.push_back(MiningField(field));
    }
    return schema;
}

Node DocumentDrawing::MiningField(const Field& field)
{
    Node node{"MiningField", {{"name", field.name}}};
    Attributes& attributes = node.attributes;
    if (draws_.Seldom(4)) attributes.emplace_back("usageType", "active");
    if (draws_.Seldom(4)) attributes.emplace_back("missingValueReplacement", Cell(field));
    if (draws_.Seldom(12)) {
        attributes.emplace_back("missingValueTreatment",
                                draws_.Seldom(2) ? "returnInvalid" : "asMean");
    }
    if (field.IsCovariate() && draws_.Seldom(6)) {
        attributes.emplace_back("outliers",
                                draws_.Seldom(2) ? "asMissingValues" : "asExtremeValues");
        attributes.emplace_back("lowValue", "0");
        attributes.emplace_back("highValue", "5");
    }
    if (draws_.Seldom(6)) {
        static constexpr const char* kTreatments[] = {"asMissing", "asIs", "returnInvalid",
                                                      "asValue"};
        attributes.emplace_back("invalidValueTreatment", draws_.OneIn(kTreatments));
        if (attributes.back().second == "asValue") {
            attributes.emplace_back("invalidValueReplacement", Cell(field));
        }
    }
    return node;
}

std::string DocumentDrawing::Cell(const Field& field)
{
    if (draws_.Seldom(12) || field.Cells().empty()) return std::string(OddValue(draws_.Raw()));
    return draws_.OneIn(field.Cells());
}

std::optional<Node> DocumentDrawing::Transformations()
{
    if (!draws_.Seldom(6)) return std::nullopt;
    std::string bytes;
    for (int i = 0; i < 64; ++i) bytes += static_cast<char>(draws_.Raw());
    Choices choices(bytes);
    Node section = DrawSection(choices);
    for (const Node& child : section.children) {
        if (child.tag != "DerivedField" || child.attributes[0].second != "d") continue;
        predictors_.push_back({child.attributes[0].second,
                               child.attributes[1].second,
                               child.attributes[2].second,
                               {},
                               {"f", "m", "1"},
                               true});
    }
    for (const Field& field : Fields()) {
        const bool isRead =
            XmlOf(section).find("field=\"" + field.name + "\"") != std::string::npos;
        if (isRead && !IsPredictor(field)) others_.push_back(field);
    }
    if (draws_.Seldom(4)) {
        section.tag = "TransformationDictionary";
        transformations_ = std::move(section);
        return std::nullopt;
    }
    return section;
}

void DocumentDrawing::AddSections(Node& model, std::vector<Node> extensions)
{
    std::optional<Node> local = Transformations();
    Node schema = MiningSchema();
    for (const Field& field : others_) {
        fields_.push_back(field);
        schema.children.push_back(MiningField(field));
    }
    for (Node& extension : extensions) model.children.push_back(std::move(extension));
    model.children.push_back(std::move(schema));
    if (draws_.Seldom(8)) model.children.push_back(Output());
    if (draws_.Seldom(8)) model.children.push_back(Targets());
    if (local) model.children.push_back(std::move(*local));
}

Node DocumentDrawing::Output()
{
    static constexpr const char* kFeatures[] = {
        "predictedValue", "predictedDisplayValue",   "probability",     "residual",
        "standardError",  "confidenceIntervalLower", "transformedValue"};
    Node output{"Output"};
    const size_t count = 1 + draws_.Below(3);
    for (size_t i = 0; i < count; ++i) {
        Node field{"OutputField",
                   {{"name", "o" + std::to_string(i)}, {"feature", draws_.OneIn(kFeatures)}}};
        if (!target_.values.empty() && draws_.Seldom(2)) {
            field.attributes.emplace_back("value", Category());
        }
        if (draws_.Seldom(3)) {
            field.attributes.emplace_back("dataType", draws_.Seldom(2) ? "string" : "double");
        }
        if (field.attributes[1].second == "transformedValue") {
            field.children.push_back({"FieldRef", {{"field", i == 0 ? "x" : "o0"}}});
        }
        output.children.push_back(std::move(field));
    }
    return output;
}

Node DocumentDrawing::Targets()
{
    static constexpr const char* kCasts[] = {"round", "ceiling", "floor"};
    Node target{"Target", {{"field", std::string(kTarget)}}};
    if (target_.values.empty()) {
        if (draws_.Seldom(2)) target.attributes.emplace_back("castInteger", draws_.OneIn(kCasts));
        if (draws_.Seldom(2)) target.attributes.emplace_back("min", "0");
        if (draws_.Seldom(2)) target.attributes.emplace_back("max", "9");
        if (draws_.Seldom(2)) target.attributes.emplace_back("rescaleFactor", draws_.Number());
        if (draws_.Seldom(2)) target.attributes.emplace_back("rescaleConstant", "1");
        if (draws_.Seldom(3)) {
            target.children.push_back({"TargetValue", {{"defaultValue", draws_.Number()}}});
        }
    } else {
        for (const std::string& value : target_.values) {
            Node one{"TargetValue", {{"value", value}}};
            if (draws_.Seldom(2)) one.attributes.emplace_back("displayValue", "the " + value);
            if (draws_.Seldom(2)) one.attributes.emplace_back("priorProbability", "0.25");
            target.children.push_back(std::move(one));
        }
    }
    return {"Targets", {}, {std::move(target)}};
}

Node DocumentDrawing::Verification()
{
    Node fields{"VerificationFields"};
    Node row{"row"};
    const auto add = [&](const Field& field) {
        const std::string column = "c" + std::to_string(fields.children.size());
        fields.children.push_back(
            {"VerificationField", {{"field", field.name}, {"column", column}}});
        row.children.push_back({column, {}, {}, Cell(field)});
    };
    for (const Field& field : predictors_) {
        if (!field.isDerived) add(field);
    }
    add(target_);
    Node table{"InlineTable"};
    table.children.push_back(std::move(row));
    return {"ModelVerification", {}, {std::move(fields), std::move(table)}};
}

}  // namespace MCVelscore_850::fuzz
