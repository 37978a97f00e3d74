#include "cli/commandline.h"
#include "cli/console.h"
#include "cli/stopsignals.h"

using namespace MCVelscore_850;

int main(int argumentCount, char** arguments)
{
    HoldStandardStreams();
    IgnoreWriteSignals();
    Console console;
    return RunProgram(argumentCount, arguments, console);
}
