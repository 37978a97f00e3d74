#include "host/documents/zelttranslator.h"

#include <limits>
#include <memory>

#include <xercesc/dom/DOM.hpp>

#include "host/documents/zeltdictionarytags.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/values/scorevalue.h"
#include "host/variables/dictvar.h"
#include "host/variables/scoredictionary.h"
#include "host/variables/varstats.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
using Tags = ZELTDictionaryTags;

namespace {

const std::string kDictionary = "dictionary";

// The words of an attribute of "variable" and what they mean; another word refuses.
template <class Meaning>
struct WordRow {
    const std::string& word;
    Meaning meaning;
};

const WordRow<ScoreDictVar::ValueType> kStorageTypes[] = {
    {Tags::kNumeric, ScoreDictVar::NUMERIC},
    {Tags::kString, ScoreDictVar::STRING},
};

const WordRow<ScoreDictVar::MeasureLevel> kLevels[] = {
    {Tags::kContinuous, ScoreDictVar::CONTINUOUS},
    {Tags::kNominal, ScoreDictVar::CATEGORICAL},
    {Tags::kOrdinal, ScoreDictVar::ORDINAL},
};

template <class Meaning, size_t N>
Meaning MeaningOf(const WordRow<Meaning> (&rows)[N], const std::string& word,
                  const std::string& attribute)
{
    for (const auto& row : rows) {
        if (word == row.word) return row.meaning;
    }
    Refuse(kUnexpectedWord, word.c_str(), attribute.c_str(), Tags::kVariable.c_str());
}

DictVarType TypeOf(const std::string& name, const std::string& storage, const std::string& level)
{
    DictVarType type;
    type.name = name;
    type.valueType = MeaningOf(kStorageTypes, storage, Tags::kStorageType);
    type.dataType = storage;
    const bool text = type.valueType == ScoreDictVar::STRING;
    if (level.empty() || level == Tags::kUnknown) {
        type.level = text ? ScoreDictVar::CATEGORICAL : ScoreDictVar::CONTINUOUS;
    } else {
        type.level = MeaningOf(kLevels, level, Tags::kMeasurementLevel);
    }
    if (text && type.level == ScoreDictVar::CONTINUOUS) {
        Refuse(kStorageAndLevel, name.c_str(), storage.c_str(), level.c_str());
    }
    return type;
}

}  // namespace

ZELTTranslator::ZELTTranslator() = default;
ZELTTranslator::~ZELTTranslator() = default;

std::string ZELTTranslator::Attribute(const DOMElement* element, const std::string& name) const
{
    return Transcode(GetAttribute(element, name));
}

void ZELTTranslator::ExpectElement(const DOMElement* element, const std::string& tag,
                                   const std::string& parent) const
{
    if (IsEqual(element->getTagName(), tag)) return;
    NoteElement(element);
    Refuse(kUnexpectedWord, ToString(element->getTagName()).c_str(), tag.c_str(), parent.c_str());
}

ScoreDictionary* ZELTTranslator::ParseDictionary(DOMElement* element)
{
    auto dictionary = std::make_unique<BaseDictionary>();
    for (DOMElement* child = GetFirstChildElt(element); child != nullptr;
         child = GetNextSiblingElt(child)) {
        ExpectElement(child, Tags::kVariable, kDictionary);
        const std::string name = Transcode(GetAttributeForced(child, Tags::kName));
        const std::string storage = Transcode(GetAttributeForced(child, Tags::kStorageType));
        auto var = std::make_unique<DictVar>(
            TypeOf(name, storage, Attribute(child, Tags::kMeasurementLevel)));
        ReadVariable(child, *var);
        var->SetUpCatEncoder();
        NoteElement(child);
        if (!dictionary->AddVar(name, var.release())) Refuse(kDuplicateField, name.c_str());
    }
    return dictionary.release();
}

void ZELTTranslator::ReadVariable(DOMElement* element, DictVar& var)
{
    for (DOMElement* child = GetFirstChildElt(element); child != nullptr;
         child = GetNextSiblingElt(child)) {
        if (IsEqual(child->getTagName(), Tags::kCategories)) {
            ReadCategories(child, var);
        } else if (IsEqual(child->getTagName(), Tags::kMissingValues)) {
            ReadMissingValues(child, var);
        } else if (IsEqual(child->getTagName(), Tags::kVarStats)) {
            ReadVarStats(child, var);
        } else {
            ExpectElement(child, Tags::kFormatSpec, Tags::kVariable);  // how values are printed
        }
    }
    var.EndDeclarations();
}

void ZELTTranslator::ReadCategories(DOMElement* element, DictVar& var)
{
    for (DOMElement* child = GetFirstChildElt(element); child != nullptr;
         child = GetNextSiblingElt(child)) {
        ExpectElement(child, Tags::kCategory, Tags::kCategories);
        DeclareText(child, var, false);
    }
}

void ZELTTranslator::ReadMissingValues(DOMElement* element, DictVar& var)
{
    for (DOMElement* child = GetFirstChildElt(element); child != nullptr;
         child = GetNextSiblingElt(child)) {
        if (IsEqual(child->getTagName(), Tags::kValue)) {
            DeclareText(child, var, true);
            continue;
        }
        ExpectElement(child, Tags::kRange, Tags::kMissingValues);
        const std::string low = Transcode(GetAttributeForced(child, Tags::kMinimum));
        const std::string high = Transcode(GetAttributeForced(child, Tags::kMaximum));
        constexpr double kNoBound = std::numeric_limits<double>::infinity();
        var.DeclareMissingRange(low == Tags::kLowest ? -kNoBound : VerifyDouble(low),
                                high == Tags::kHighest ? kNoBound : VerifyDouble(high));
    }
}

void ZELTTranslator::DeclareText(DOMElement* element, DictVar& var, bool missing)
{
    const std::string text = Transcode(GetAttributeForced(element, Tags::kValue));
    std::unique_ptr<ScoreValue> value(CarefullyMakeVarValue(&var, text));
    if (value == nullptr) Refuse(kInvalidValue, text.c_str(), var.GetName().c_str());
    if (missing) {
        var.DeclareMissingValue(std::move(value));
    } else {
        var.DeclareValue(std::move(value), text, DictVar::Property::Valid);
    }
}

void ZELTTranslator::ReadVarStats(DOMElement* element, DictVar& var)
{
    // What there is no number for says nothing.
    const auto read = [&](const std::string& name, VarStats& stats, void (VarStats::*set)(double)) {
        const std::string text = Attribute(element, name);
        if (text.empty() || text == Tags::kInfinity || text == Tags::kNegativeInfinity ||
            text == Tags::kNotANumber) {
            return;
        }
        (stats.*set)(VerifyDouble(text));
    };
    auto stats = std::make_unique<VarStats>();
    read(Tags::kMinimum, *stats, &VarStats::SetMinimum);
    read(Tags::kMaximum, *stats, &VarStats::SetMaximum);
    read(Tags::kMean, *stats, &VarStats::SetMean);
    var.SetVarStats(stats.release());
}

}  // namespace MCVelscore_850
