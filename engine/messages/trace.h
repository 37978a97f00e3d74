#ifndef VELSCORE_ENGINE_MESSAGES_TRACE_H
#define VELSCORE_ENGINE_MESSAGES_TRACE_H

#include <string>

namespace MCVelscore_850 {

/// Turns the trace on as the text says: a level ("1": entries, exits and case codes; "2": facts of
/// documents as well), or a level and a file to append to ("2:trace.txt"). Without a file the lines
/// go to standard error. False, with the trace as it was, for any other text and for a file that
/// can't be opened.
bool SetUpTrace(const std::string& setting);

}  // namespace MCVelscore_850

#endif
