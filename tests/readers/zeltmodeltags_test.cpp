#include "host/documents/zeltmodeltags.h"

#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

using Tags = ZELTModelTags;

// The names of the table's constants, read from its header: the language can't list them.
std::vector<std::string> ConstantNames()
{
    const std::regex declaration(R"((?:VELSCORE_TAG\(|static inline const std::string& )(\w+))");
    std::vector<std::string> names;
    std::ifstream header("host/documents/zeltmodeltags.h");
    std::smatch match;
    for (std::string line; std::getline(header, line);) {
        if (std::regex_search(line, match, declaration)) names.push_back(match[1]);
    }
    return names;
}

TEST(ZELTModelTags, Hold86Constants)
{
    const std::vector<std::string> names = ConstantNames();
    EXPECT_EQ(names.size(), 86u);
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), 86u);
}

TEST(ZELTModelTags, HaveTheTextsOfTheOlderForm)
{
    const struct {
        const std::string& constant;
        const char* text;
    } kRows[] = {
        {Tags::XML_ELE_ZELTML, "zelt-ml"},
        {Tags::XML_ELE_DICTIONARY, "dictionary"},
        {Tags::XML_ELE_VARIABLE, "variable"},
        {Tags::XML_ELE_CATEGORIES, "categories"},
        {Tags::XML_ELE_CATEGORY, "category"},
        {Tags::XML_ELE_MISSING_VALUES, "missing-values"},
        {Tags::XML_ELE_RANGE, "range"},
        {Tags::XML_ELE_VAR_STATS, "var-stats"},
        {Tags::XML_ELE_FORMAT_SPEC, "format-spec"},
        {Tags::XML_ELE_MODEL, "model"},
        {Tags::XML_ELE_REGRESS_MODEL, "regression-model"},
        {Tags::XML_ELE_DISCRIM_MODEL, "discriminant-model"},
        {Tags::XML_ELE_INV_COV_MATRICES, "inv-gcov-matrices"},
        {Tags::XML_ELE_INV_COV_MATRIX, "inv-gcov-matrix"},
        {Tags::XML_ELE_FN_COEFS, "function-coefficients"},
        {Tags::XML_ELE_PARAM_LIST, "parameter-list"},
        {Tags::XML_ELE_FAC_LIST, "factor-list"},
        {Tags::XML_ELE_COV_LIST, "covariate-list"},
        {Tags::XML_ELE_P_TABLE, "p-table"},
        {Tags::XML_ELE_PP_CELL, "pp-cell"},
        {Tags::XML_ELE_PCOV_CELL, "pcov-cell"},
        {Tags::XML_ATT_PARAMETER_NAME, "parameter-name"},
        {Tags::XML_ATT_PP_PREDICTOR, "predictor-name"},
        {Tags::XML_ATT_PCOV_P_COL, "p-col"},
        {Tags::XML_ATT_PCOV_P_ROW, "p-row"},
        {Tags::XML_ATT_PCOV_T_COL, "t-col"},
        {Tags::XML_ATT_PCOV_T_ROW, "t-row"},
        {Tags::XML_ATT_RM_TARGET_VAR, "target-variable-name"},
        {Tags::XML_ATT_DM_TARGET_VAR, "target-variable-name"},
        {Tags::XML_ATT_PC_TARGET_CAT, "target-category"},
        {Tags::XML_ATT_TARGET_CAT, "target-category"},
        {Tags::XML_ATT_VERBOSE_MODEL_SPEC, "verbose-model-specification"},
        {Tags::XML_ATT_VS_IQR, "inter-quartile-range"},
        {Tags::XML_ATT_VS_SD, "standard-deviation"},
        {Tags::XML_ATT_CA_DISPLAY_VALUE, "display-value"},
        {Tags::XML_VAL_MT_MLR, "multinomial-logistic"},
        {Tags::XML_VAL_MT_CLR, "conditional-logistic"},
        {Tags::XML_VAL_MT_REGRESS, "regression"},
        {Tags::XML_VAL_MT_GLM, "general-linear"},
        {Tags::XML_VAL_MT_LOGLIN, "log-linear"},
        {Tags::XML_VAL_ML_UNKNOWN, "UNKNOWN"},
        {Tags::XML_VAL_ST_NUMERIC, "NUMERIC"},
        {Tags::XML_VAL_VA_LOWEST, "LOWEST"},
        {Tags::XML_VAL_VA_HIGHEST, "HIGHEST"},
        {Tags::XML_INF, "INF"},
        {Tags::XML_NEG_INF, "-INF"},
        {Tags::XML_NAN, "NaN"},
    };
    for (const auto& row : kRows) EXPECT_EQ(row.constant, row.text);
}

}  // namespace
}  // namespace MCVelscore_850
