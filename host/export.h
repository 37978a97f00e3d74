#ifndef VELSCORE_HOST_EXPORT_H
#define VELSCORE_HOST_EXPORT_H

// The host's classes are seen by the plug-in and by the engine; everything else is hidden.
#define VELHOST_API __attribute__((visibility("default")))

#endif
