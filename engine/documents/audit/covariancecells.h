#ifndef VELSCORE_ENGINE_DOCUMENTS_AUDIT_COVARIANCECELLS_H
#define VELSCORE_ENGINE_DOCUMENTS_AUDIT_COVARIANCECELLS_H

#include <cstdint>
#include <vector>

#include "engine/documents/audit/cellattributes.h"
#include "engine/documents/audit/documentfacts.h"

namespace MCVelscore_850 {

/// The covariance cells of a document. They are many times as many as all else, and a walk over
/// them waits for memory more than for anything: who walks over the tree for another reason reads
/// them on the way, before it is known which parameters there are.
///
/// Order   Watch(), then Read() of each child of List() in order; or ReadAll(). Then TakeCells()
/// and
///         TakeCategories(). Forget() when the tree has changed since.
class CovarianceCells {
public:
    /// What is read from now on are the cells of that document.
    void Watch(Element root);
    /// The element whose children are to be read; null where there is none.
    Element List() const { return list_; }
    /// Passes over what is no cell.
    void Read(Element child);
    void ReadAll(Element root);
    bool AreRead() const { return areRead_; }
    void Forget() { *this = {}; }

    /// The cells, with numbers of these parameters. They are gone from here.
    std::vector<DocumentFacts::Covariance> TakeCells(const NameIndex& parameters);
    /// The categories that the cells name.
    NameIndex TakeCategories() { return std::move(categories_); }

private:
    struct Words;
    static const Words& Published();
    static const Words& Older();
    uint32_t NumberOf(Element::RawText name, uint32_t& last);
    uint32_t CategoryOf(Element::RawText text);

    bool areRead_ = false;
    const Words* words_ = nullptr;
    Element list_;
    std::vector<AttributeReader<5>> reader_;  // one, once the words are known
    NameIndex names_;                         // of parameters, as the cells name them
    uint32_t lastRow_ = 0;
    uint32_t lastColumn_ = 0;
    NameIndex categories_;
    std::vector<DocumentFacts::Covariance> cells_;  // rows and columns are numbers of names_
};

}  // namespace MCVelscore_850

#endif
