#include "readers/modeloptions.h"

#include "host/documents/pmmlmodeltags.h"
#include "models/gzlrmodel.h"
#include "models/ogzlrmodel.h"
#include "readers/codes.h"
#include "readers/generalregressiontranslator.h"
#include "readers/parse.h"

namespace MCVelscore_850 {

using Tags = PMMLModelTags;

namespace {

// A link by its words. The two spellings name one link in their own way each.
template <class Link>
struct LinkRow {
    const std::string& extension;
    const std::string& attribute;
    Link link;
    bool needsParameter;
};

// A word that both spellings have.
template <class Link>
LinkRow<Link> Both(const std::string& word, Link link, bool needsParameter = false)
{
    return {word, word, link, needsParameter};
}

// Compared in this order.
const LinkRow<GZLRModel::LinkFunction> kLinks[] = {
    Both(Tags::XML_VAL_RM_EXT_VALUE_LINK_IDENTITY, GZLRModel::LINK_IDENTITY),
    Both(Tags::XML_VAL_RM_EXT_VALUE_LINK_PROBIT, GZLRModel::LINK_PROBIT),
    {Tags::XML_VAL_RM_EXT_VALUE_LINK_NLOGLOG, Tags::XML_VAL_RM_VALUE_LINK_LOGLOG,
     GZLRModel::LINK_NLOGLOG, false},
    Both(Tags::XML_VAL_RM_EXT_VALUE_LINK_LOGIT, GZLRModel::LINK_LOGIT),
    Both(Tags::XML_VAL_RM_EXT_VALUE_LINK_CLOGLOG, GZLRModel::LINK_CLOGLOG),
    Both(Tags::XML_VAL_RM_EXT_VALUE_LINK_LOG, GZLRModel::LINK_LOG),
    Both(Tags::XML_VAL_RM_EXT_VALUE_LINK_LOGC, GZLRModel::LINK_LOGC),
    Both(Tags::XML_VAL_RM_EXT_VALUE_LINK_NEGBIN, GZLRModel::LINK_NEGBIN, true),
    Both(Tags::XML_VAL_RM_EXT_VALUE_LINK_ODDSPOWER, GZLRModel::LINK_ODDSPOWER, true),
    Both(Tags::XML_VAL_RM_EXT_VALUE_LINK_POWER, GZLRModel::LINK_POWER, true),
};

const LinkRow<CumulativeLinkModel::CumulLinkFunction> kCumulativeLinks[] = {
    {Tags::XML_VAL_RM_EXT_VALUE_LINK_CUM_CAUCHIT, Tags::XML_VAL_RM_VALUE_LINK_CAUCHIT,
     CumulativeLinkModel::CUM_CAUCHIT, false},
    {Tags::XML_VAL_RM_EXT_VALUE_LINK_CUM_PROBIT, Tags::XML_VAL_RM_VALUE_LINK_PROBIT,
     CumulativeLinkModel::CUM_PROBIT, false},
    {Tags::XML_VAL_RM_EXT_VALUE_LINK_CUM_LOGIT, Tags::XML_VAL_RM_VALUE_LINK_LOGIT,
     CumulativeLinkModel::CUM_LOGIT, false},
    {Tags::XML_VAL_RM_EXT_VALUE_LINK_CUM_LOGLOG, Tags::XML_VAL_RM_VALUE_LINK_LOGLOG,
     CumulativeLinkModel::CUM_LOGLOG, false},
    {Tags::XML_VAL_RM_EXT_VALUE_LINK_CUM_CLOGLOG, Tags::XML_VAL_RM_VALUE_LINK_CLOGLOG,
     CumulativeLinkModel::CUM_CLOGLOG, false},
};

template <class Type>
struct DistributionRow {
    const std::string& word;
    Type type;
};

const DistributionRow<GZLRModel::DistType> kDistributions[] = {
    {Tags::XML_VAL_RM_EXT_VALUE_DIST_NORMAL, GZLRModel::DIST_NORMAL},
    {Tags::XML_VAL_RM_EXT_VALUE_DIST_BINOMIAL, GZLRModel::DIST_BINOMIAL},
    {Tags::XML_VAL_RM_EXT_VALUE_DIST_GAMMA, GZLRModel::DIST_GAMMA},
    {Tags::XML_VAL_RM_EXT_VALUE_DIST_IGAUSS, GZLRModel::DIST_IGAUSS},
    {Tags::XML_VAL_RM_EXT_VALUE_DIST_NEGBIN, GZLRModel::DIST_NEGBIN},
    {Tags::XML_VAL_RM_EXT_VALUE_DIST_POISSON, GZLRModel::DIST_POISSON},
    {Tags::XML_VAL_RM_EXT_VALUE_DIST_TWEEDIE, GZLRModel::DIST_TWEEDIE},
};

const DistributionRow<OGZLRModel::DistType> kOrdinalDistributions[] = {
    {Tags::XML_VAL_RM_EXT_VALUE_DIST_MULTINOMIAL, OGZLRModel::DIST_MULTINOMIAL},
};

GZLRModel& Generalized(const ModelOption& option)
{
    return static_cast<GZLRModel&>(*option.parse.model);
}

OGZLRModel& GeneralizedOrdinal(const ModelOption& option)
{
    return static_cast<OGZLRModel&>(*option.parse.model);
}

// Calls `take` with the model in its own class.
template <class Take>
void WithModel(const ModelOption& option, Take take)
{
    if (option.parse.Is(kGeneralizedLinear)) {
        take(Generalized(option));
    } else {
        take(GeneralizedOrdinal(option));
    }
}

void ExpectPredictor(const ModelOption& option)
{
    if (option.parse.model->GetVarRole(option.value) <= ScoreModel::ROLE_TARGET) {
        Refuse(kNotAPredictor, option.value.c_str());
    }
}

[[noreturn]] void RefuseWord(const ModelOption& option)
{
    Refuse(kUnexpectedWord, option.value.c_str(), Tags::XML_ATT_VALUE.c_str(), option.name.c_str());
}

enum class Spelling { Extension, Attribute };

template <class Row, size_t n>
const Row& FindLink(const ModelOption& option, Spelling spelling, const Row (&rows)[n])
{
    for (const Row& row : rows) {
        const std::string& word = spelling == Spelling::Extension ? row.extension : row.attribute;
        if (option.value == word) return row;
    }
    RefuseWord(option);
}

void TakeLink(const ModelOption& option, Spelling spelling)
{
    if (!option.parse.Is(kGeneralizedLinear)) {
        GeneralizedOrdinal(option).SetLinkFunction(
            FindLink(option, spelling, kCumulativeLinks).link);
        return;
    }
    const auto& row = FindLink(option, spelling, kLinks);
    Generalized(option).SetLinkFunction(row.link);
    // Never taken back: another link that comes later doesn't lift the need.
    if (row.needsParameter) option.parse.linkParamRequired = true;
}

template <class Row, size_t n>
const Row& FindDistribution(const ModelOption& option, const Row (&rows)[n])
{
    for (const Row& row : rows) {
        if (option.value == row.word) return row;
    }
    RefuseWord(option);
}

}  // namespace

void TakeTrialsVariable(const ModelOption& option)
{
    const ScoreDictVar* variable = option.reader.FindVariable(option.parse, option.value);
    ExpectPredictor(option);
    if (!option.parse.Is(kGeneralizedLinear)) {
        Refuse(kVariableRefused, option.name.c_str(), option.value.c_str());
    }
    Generalized(option).SetTrialsVar(variable);
}

void TakeOffsetVariable(const ModelOption& option)
{
    const ScoreDictVar* variable = option.reader.FindVariable(option.parse, option.value);
    ExpectPredictor(option);
    WithModel(option, [&](auto& model) { model.SetOffsetVar(variable); });
}

void TakeOffsetVariableWithRole(const ModelOption& option)
{
    const ScoreDictVar* variable = option.reader.FindVariable(option.parse, option.value);
    option.parse.model->SetVarRole(variable, ScoreModel::ROLE_OFFSET);
    TakeOffsetVariable(option);
}

void TakeTrialsValue(const ModelOption& option)
{
    if (!option.parse.Is(kGeneralizedLinear)) return;
    Generalized(option).SetTrialsValue(option.reader.VerifyInt(option.value));
}

void TakeOffsetValue(const ModelOption& option)
{
    const double value = option.reader.VerifyDouble(option.value);
    WithModel(option, [&](auto& model) { model.SetOffsetValue(value); });
}

void TakeLinkOfExtension(const ModelOption& option) { TakeLink(option, Spelling::Extension); }

void TakeLinkOfAttribute(const ModelOption& option) { TakeLink(option, Spelling::Attribute); }

void TakeLinkParameter(const ModelOption& option)
{
    const double parameter = option.reader.VerifyDouble(option.value);
    if (option.parse.Is(kGeneralizedLinear)) Generalized(option).SetLinkParameter(parameter);
    option.parse.linkParamSeen = true;
}

void TakeDistribution(const ModelOption& option)
{
    if (option.parse.Is(kGeneralizedLinear)) {
        Generalized(option).SetDistType(FindDistribution(option, kDistributions).type);
    } else {
        GeneralizedOrdinal(option).SetDistType(
            FindDistribution(option, kOrdinalDistributions).type);
    }
}

}  // namespace MCVelscore_850
