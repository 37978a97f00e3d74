#include <cstdlib>
#include <exception>
#include <new>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "cli/commandline.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/stopsignals.h"
#include "engine/messages/failure.h"
#include "engine/messages/trace.h"

using namespace MCVelscore_850;

namespace {

// The number of a standard stream that is closed would go to the next file opened, and what is
// meant for the one would land in the other. What takes its place fails as the closed one does: it
// is open in the other direction only.
void HoldStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

}  // namespace

int main(int argumentCount, char** arguments)
{
    HoldStandardStreams();
    IgnoreWriteSignals();
    Console console;
    try {
        if (const char* trace = std::getenv("VELSCORE_TRACE");
            trace != nullptr && *trace != '\0' && !SetUpTrace(trace)) {
            throw UsageError("VELSCORE_TRACE is '" + std::string(trace) +
                             "', not a level from 0 to 9 or LEVEL:FILE with a file that can be "
                             "written");
        }
        return RunCommandLine(argumentCount, arguments, console);
    } catch (const UsageError& wrong) {
        console.SayError(wrong.what(),
                         "velscore --help and velscore COMMAND --help tell the usage.");
        return kExitUsage;
    } catch (const Failure& failure) {
        console.SayFailure(failure);
        return static_cast<int>(failure.Kind());
    } catch (const std::bad_alloc&) {
        console.SayError("there is no memory left");
    } catch (const std::exception& defect) {
        console.SayError(
            std::string("internal error: ") + defect.what(),
            "This is a defect of velscore; please report it with the model and the row.");
    }
    return kExitInternal;
}
