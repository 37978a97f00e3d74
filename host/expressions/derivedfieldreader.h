#ifndef VELSCORE_HOST_EXPRESSIONS_DERIVEDFIELDREADER_H
#define VELSCORE_HOST_EXPRESSIONS_DERIVEDFIELDREADER_H

#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/documents/pmmltranslator.h"
#include "host/expressions/expression.h"
#include "host/variables/transformationdictionary.h"

namespace MCVelscore_850 {

/// Reads the derived fields and functions of one section. A field may use one that stands after
/// it, so each is read when it is first asked for; a field that is asked for while it is being
/// read depends on itself. The same holds for functions.
class PMMLTranslator::DerivedFieldReader {
public:
    DerivedFieldReader(PMMLTranslator& translator, const ScoreDictionary& dictionary,
                       TransformationDictionary& derived);
    ~DerivedFieldReader();

    /// All derived fields and functions of a section.
    void ReadAll(xercesc::DOMElement* section);
    /// These fields, which see the functions of the model and of the document.
    void ReadGiven(const std::vector<DerivedDeclaration>& fields, xercesc::DOMElement* model);

private:
    using DOMElement = xercesc::DOMElement;
    /// One kind of expression: `type` is the one that the outcome is wanted in, null where none is
    /// known.
    using Read = std::unique_ptr<Expression> (DerivedFieldReader::*)(DOMElement*,
                                                                     const DataType* type);
    struct ExpressionRow {
        const char* tag;
        Read read;
    };
    static const ExpressionRow kExpressions[];

    /// What declares a field: a DerivedField, which says all itself, or what a caller gives.
    struct Declared {
        DOMElement* element;
        const DerivedDeclaration* given;  // null for a DerivedField
    };

    // Sections, fields and functions.
    void NoteSection(DOMElement* section, bool functionsAlone);
    void NoteField(const std::string& name, const Declared& declared);
    void ReadFunctions(DOMElement* element);
    DictVarType TypeOfField(DOMElement* element, const std::string& name);
    const ScoreDictVar* ReadField(const std::string& name);
    void ListTexts(const Expression& expression, DictVar& var);
    void CountSteps(const Expression& expression);
    const ScoreDictVar* FindField(const std::string& name);
    std::shared_ptr<const DefinedFunction> FindDefinedFunction(const std::string& name);
    std::shared_ptr<const DefinedFunction> ReadFunction(const std::string& name);
    void ReadParameters(DOMElement* element, DefinedFunction& function);

    // Expressions.
    std::unique_ptr<Expression> ReadOnlyExpression(DOMElement* element, const DataType* type);
    std::unique_ptr<Expression> ReadExpression(DOMElement* element, const DataType* type);
    std::unique_ptr<Expression> ReadFieldRef(DOMElement* element, const DataType* type);
    std::unique_ptr<Expression> ReadConstant(DOMElement* element, const DataType* type);
    std::unique_ptr<Expression> ReadNormContinuous(DOMElement* element, const DataType* type);
    std::unique_ptr<Expression> ReadNormDiscrete(DOMElement* element, const DataType* type);
    std::unique_ptr<Expression> ReadDiscretize(DOMElement* element, const DataType* type);
    std::unique_ptr<Expression> ReadMapValues(DOMElement* element, const DataType* type);
    std::unique_ptr<Expression> ReadApply(DOMElement* element, const DataType* type);
    std::unique_ptr<Expression> ReadBuiltInCall(DOMElement* element, const Function& function,
                                                const DataType* type);
    std::unique_ptr<Expression> ReadDefinedCall(DOMElement* element, const std::string& name,
                                                const DataType* type);

    // Their parts.
    FieldSource ReadSource(DOMElement* element);
    ExpressionValue ValueOf(const std::string& text, const DataType* type);
    const DataType* ReadTypeAttribute(DOMElement* element);
    Replacement ReadReplacement(DOMElement* element, const std::string& attribute,
                                const DataType* type);
    ApplyRules ReadRules(DOMElement* element, const DataType* type);
    std::vector<DOMElement*> ArgumentElements(DOMElement* element);
    void RefuseArgumentCount(DOMElement* element, const std::string& function, size_t found,
                             int least, int most);
    void CheckPattern(const Function& function, const std::vector<DOMElement*>& elements,
                      const Arguments& arguments);
    std::string LocalName(const DOMElement* element) const;
    /// The columns of a MapValues by name, each with its position.
    using MapColumns = std::unordered_map<std::string, size_t>;
    void ReadMapRow(DOMElement* row, const MapColumns& columns, const std::string& outputColumn,
                    const DataType* type, MapTable& table);

    PMMLTranslator& t_;
    const ScoreDictionary& dictionary_;
    TransformationDictionary& derived_;
    std::map<std::string, Declared> fields_;
    std::map<std::string, DOMElement*> functionElements_;
    std::map<std::string, std::shared_ptr<const DefinedFunction>> functions_;
    std::set<std::string> underway_;
    std::set<std::string> functionsUnderway_;
    size_t textsLeft_;
    double steps_ = 0.0;
    int patterns_ = 0;
    int depth_ = 0;                        // of expressions that are being read, through all fields
    std::string field_;                    // the derived field or function being read, for messages
    const DataType* fieldType_ = nullptr;  // its dataType
    const DefinedFunction* inFunction_ = nullptr;  // the function being read, else null
};

}  // namespace MCVelscore_850

#endif
