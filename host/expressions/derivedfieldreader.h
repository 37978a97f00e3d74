#ifndef VELSCORE_HOST_EXPRESSIONS_DERIVEDFIELDREADER_H
#define VELSCORE_HOST_EXPRESSIONS_DERIVEDFIELDREADER_H

#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>

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

    void ReadAll(xercesc::DOMElement* section);

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

    // Sections, fields and functions.
    void NoteSection(DOMElement* section, bool functionsAlone);
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
    std::map<std::string, DOMElement*> elements_;
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
