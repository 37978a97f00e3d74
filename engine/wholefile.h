#ifndef VELSCORE_ENGINE_WHOLEFILE_H
#define VELSCORE_ENGINE_WHOLEFILE_H

#include <string>
#include <string_view>

namespace MCVelscore_850 {

/// Writes a text to a file, all of it or none: a regular file gets its name when it is whole, and
/// what stood there before stays until then. `path` "-" is standard output, which is cut back to
/// where it stood when it is a regular file. Devices and pipes are written as they are; a pipe
/// whose reader went away is no failure.
///
/// Errors  Failure of kind Output (kOutputNotWritten).
void WriteWholeFile(const std::string& path, std::string_view text);

}  // namespace MCVelscore_850

#endif
