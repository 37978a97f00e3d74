#ifndef VELSCORE_CLI_CONFINEMENT_H
#define VELSCORE_CLI_CONFINEMENT_H

#include <memory>
#include <string>
#include <vector>

namespace MCVelscore_850 {

class Plugin;
struct DocumentArguments;

/// What a run opens beside the files of the system: names as they were given, "-" among them.
struct NeededFiles {
    std::vector<std::string> read;
    std::vector<std::string> written;
};

/// Opens the plug-in of a run, before the run reads anything that somebody else wrote. From then on
/// the process reads no other files than `files.read` and the system's own, makes and writes none
/// outside of the folders of `files.written`, and has no sockets, programs or other processes: a
/// defect that a document or table could make use of finds nothing to take and nowhere to send it.
///
/// Kernel   The files by Landlock (Linux 5.13), the calls by a seccomp filter, as far as the kernel
///          has them and lets the process: a run does without as well.
/// Plug-in  One that the user names is trusted with everything, as it may need what we can't know.
/// Threads  Before the process has a second one: a thread of before would stay as it is.
/// Errors   Failure of kind Plugin, as Plugin.
/// Builds   with sanitizers or coverage, which open files and look at the process at its end, stay
///          unconfined.
std::shared_ptr<const Plugin> ConfinedPlugin(const DocumentArguments& arguments,
                                             const NeededFiles& files);

}  // namespace MCVelscore_850

#endif
