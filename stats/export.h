#ifndef VELSCORE_STATS_EXPORT_H
#define VELSCORE_STATS_EXPORT_H

/// Marks what the statistics library shows to other components. The plug-in is built with hidden
/// visibility, so a class or a global without this mark cannot be reached from outside it.
#define VELSTATS_API __attribute__((visibility("default")))

#endif
