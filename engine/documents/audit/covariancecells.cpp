#include "engine/documents/audit/covariancecells.h"

#include <utility>

#include "host/documents/pmmlmodeltags.h"
#include "host/documents/zeltmodeltags.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

using Tags = PMMLModelTags;
using Old = ZELTModelTags;

struct CovarianceCells::Words {
    Element (*model)(Element root);
    const std::string& list;
    const std::string& cell;
    AttributeNames<5> attributes;  // row, column, their categories, value
};

const CovarianceCells::Words& CovarianceCells::Published()
{
    static const Words kWords{
        [](Element root) { return root.Child(Tags::XML_ELE_REGRESSMODEL); },
        Tags::XML_ELE_PCOV_MATRIX, Tags::XML_ELE_PCOV_CELL,
        AttributeNames(Tags::XML_ATT_PCC_PROW, Tags::XML_ATT_PCC_PCOL, Tags::XML_ATT_PCC_TROW,
                       Tags::XML_ATT_PCC_TCol, Tags::XML_ATT_PCC_VALUE)};
    return kWords;
}

// This form has covariances of linear regressions alone, whose cells have no categories.
const CovarianceCells::Words& CovarianceCells::Older()
{
    static const std::string kNone;
    static const Words kWords{
        [](Element root) {
            return root.Child(Old::XML_ELE_MODEL).Child(Old::XML_ELE_REGRESS_MODEL);
        },
        Old::XML_ELE_PCOV_MATRIX, Old::XML_ELE_PCOV_CELL,
        AttributeNames(Old::XML_ATT_PCOV_P_ROW, Old::XML_ATT_PCOV_P_COL, kNone, kNone,
                       Old::XML_ATT_VALUE)};
    return kWords;
}

void CovarianceCells::Watch(Element root)
{
    Forget();
    words_ = root.Is(Old::XML_ELE_ZELTML) ? &Older() : &Published();
    list_ = words_->model(root).Child(words_->list);
    reader_.emplace_back(words_->attributes);
    areRead_ = true;
}

void CovarianceCells::Read(Element child)
{
    if (!child.Is(words_->cell)) return;
    const auto [row, column, rowCategory, columnCategory, value] = reader_.front().Of(child);
    cells_.push_back({child, NumberOf(row, lastRow_), NumberOf(column, lastColumn_),
                      CategoryOf(rowCategory), CategoryOf(columnCategory), NumberIn(value)});
}

void CovarianceCells::ReadAll(Element root)
{
    Watch(root);
    for (const Element child : list_.Children()) Read(child);
}

// Most cells have the name of the cell before, or the one behind it.
uint32_t CovarianceCells::NumberOf(Element::RawText name, uint32_t& last)
{
    const auto is = [&](uint32_t number) {
        return number < names_.Size() && names_.RawNameAt(number) == name;
    };
    if (is(last)) return last;
    return last = is(last + 1) ? last + 1 : names_.Add(name);
}

uint32_t CovarianceCells::CategoryOf(Element::RawText text)
{
    return text.empty() ? NameIndex::kNone : categories_.Add(text);
}

std::vector<DocumentFacts::Covariance> CovarianceCells::TakeCells(const NameIndex& parameters)
{
    std::vector<uint32_t> numbers;  // of the parameters, by name
    for (uint32_t i = 0; i < names_.Size(); ++i) {
        numbers.push_back(parameters.Find(names_.RawNameAt(i)));
    }
    for (DocumentFacts::Covariance& cell : cells_) {
        cell.row = numbers[cell.row];
        cell.column = numbers[cell.column];
    }
    return std::move(cells_);
}

std::optional<double> NumberIn(Element::RawText text)
{
    std::array<char, 64> room;
    double number = 0.0;
    if (text.size() > room.size()) {
        return ReadNumber(Utf8FromXml(std::basic_string<XMLCh>(text).c_str()), number) ==
                       NumberText::Number
                   ? std::optional(number)
                   : std::nullopt;
    }
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] >= 0x80) return std::nullopt;
        room[i] = static_cast<char>(text[i]);
    }
    const std::string_view narrow(room.data(), text.size());
    return ReadNumber(narrow, number) == NumberText::Number ? std::optional(number) : std::nullopt;
}

}  // namespace MCVelscore_850
