#include "readers/generalregressiontranslator.h"

// The one entry of the plug-in: a new reader, which the host owns.
extern "C" __attribute__((visibility("default"))) MCVelscore_850::BaseTranslator* GiveMyTranslator()
{
    return new MCVelscore_850::GeneralRegressionTranslator();
}

// For the platforms that look for it; does nothing, and isn't seen outside.
extern "C" __attribute__((visibility("hidden"), used)) int DllMain() { return 1; }
