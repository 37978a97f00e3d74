#ifndef VELSCORE_HOST_DOCUMENTS_DOCUMENTPLACE_H
#define VELSCORE_HOST_DOCUMENTS_DOCUMENTPLACE_H

#include <xercesc/util/XercesDefs.hpp>

#include "host/export.h"
#include "host/messages/vsexception.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

namespace MCVelscore_850 {

/// Notes the line and column at which an element stands in its source. A parser that knows them
/// calls this for each element; a reader that refuses then says them.
VELHOST_API void NotePlace(xercesc::DOMElement* element, unsigned long line, unsigned long column);

/// Notes for an element that a program adds the line and column of the one that it stems from.
VELHOST_API void CopyPlace(const xercesc::DOMElement* from, xercesc::DOMElement* to);

/// The place of an element: its path from the root ("PMML/GeneralRegressionModel/PPMatrix/
/// PPCell[3]"), and line and column where they were noted.
VELHOST_API DocumentPlace PlaceOf(const xercesc::DOMElement* element);

/// Refuse, with the place of the element.
template <class... Args>
[[noreturn]] void RefuseAt(const xercesc::DOMElement* element, int code, Args... args)
{
    static_assert((std::is_scalar_v<Args> && ...), "text travels as a C string");
    VSException refusal(gErrorFormater);
    refusal.PutErrorMessage(code, args...);
    refusal.SetPlace(PlaceOf(element));
    throw VSException(refusal);
}

}  // namespace MCVelscore_850

#endif
