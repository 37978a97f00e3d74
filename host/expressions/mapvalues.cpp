// MapValues: a table of the document, looked up by one or several fields.

#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>

#include "host/expressions/expression.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

// Appends what a value looks like in a key, so that equal values look alike: a number, also one
// that a text spells, by its shortest spelling, a truth value by its canonical word. The texts of a
// field that is declared as text stay as they are. False for a value without a look.
bool AppendKey(const DataType* type, ExpressionValue& value, std::string& key)
{
    double number = 0.0;
    if (type == nullptr || type->valueType == ScoreDictVar::NUMERIC) {
        if (AsNumber(value, number)) {
            value.SetNumber(number);
        } else if (type != nullptr) {
            return false;
        }
    } else {
        CastTo(*type, value);
    }
    if (value.kind == ExpressionValue::Number) {
        if (!std::isfinite(value.number)) return false;
        AppendNumber(value.number, key);
    } else {
        MakeText(value);
        if (!value.HasValue()) return false;
        key += value.text;
    }
    key += '\0';  // no text of a document or of a table holds it
    return true;
}

}  // namespace

class MapTable::MapValues final : public Expression {
public:
    explicit MapValues(std::vector<FieldSource> columns) : columns_(std::move(columns)) {}

    bool AddRow(const std::vector<std::string>& cells, ExpressionValue output)
    {
        key_.clear();
        for (size_t i = 0; i < columns_.size(); ++i) {
            scratch_.SetText(cells[i]);
            if (!AppendKey(columns_[i].Type(), scratch_, key_)) return false;
        }
        if (rows_.emplace(key_, outputs_.size()).second) outputs_.push_back(std::move(output));
        return true;
    }
    void SetReplacements(Replacement mapMissingTo, Replacement defaultValue)
    {
        mapMissingTo_ = std::move(mapMissingTo);
        defaultValue_ = std::move(defaultValue);
    }

    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        std::string& key = c.scratch.Of<Key>(this).text;
        key.clear();
        for (const FieldSource& column : columns_) {
            column.Read(c, value);
            if (value.HasValue() && !AppendKey(column.Type(), value, key)) value.SetInvalid();
            if (!value.HasValue()) return mapMissingTo_.ApplyToField(value);
        }
        const auto found = rows_.find(key);
        if (found != rows_.end()) {
            value = outputs_[found->second];
        } else {
            value.SetMissing();
            defaultValue_.Apply(value);
        }
    }
    void CollectInputs(std::vector<const ScoreDictVar*>& inputs) const override
    {
        for (const FieldSource& column : columns_) column.CollectInputs(inputs);
    }
    int Height() const override
    {
        int height = 0;
        for (const FieldSource& column : columns_) height = std::max(height, column.Height());
        return 1 + height;
    }
    double Steps() const override { return 1.0 + static_cast<double>(columns_.size()); }
    bool CollectOutcomes(Outcomes& outcomes) const override
    {
        outcomes.mayLackValue = true;
        // A long table often has few different outputs.
        std::unordered_map<std::string, bool> seen;
        for (const ExpressionValue& output : outputs_) {
            ExpressionValue text = output;
            MakeText(text);
            if (!seen.emplace(text.text, true).second) continue;
            if (!outcomes.Add(output)) return false;
        }
        return (!defaultValue_.given || outcomes.Add(defaultValue_.value)) &&
               (!mapMissingTo_.given || outcomes.Add(mapMissingTo_.value));
    }

private:
    struct Key final : ExpressionScratch::Part {
        std::string text;
    };

    std::vector<FieldSource> columns_;
    std::unordered_map<std::string, size_t> rows_;
    std::vector<ExpressionValue> outputs_;
    Replacement mapMissingTo_;
    Replacement defaultValue_;
    std::string key_;  // of a row that is added
    ExpressionValue scratch_;
};

MapTable::MapTable(std::vector<FieldSource> columns)
    : map_(std::make_unique<MapValues>(std::move(columns)))
{}
MapTable::MapTable(MapTable&&) noexcept = default;
MapTable::~MapTable() = default;

bool MapTable::AddRow(const std::vector<std::string>& cells, ExpressionValue output)
{
    return map_->AddRow(cells, std::move(output));
}

std::unique_ptr<Expression> MapTable::MakeExpression(Replacement mapMissingTo,
                                                     Replacement defaultValue) &&
{
    map_->SetReplacements(std::move(mapMissingTo), std::move(defaultValue));
    return std::move(map_);
}

}  // namespace MCVelscore_850
