#ifndef DRIVERS_SELVANE_RELOAD_CAUSES_H
#define DRIVERS_SELVANE_RELOAD_CAUSES_H

#include "Lumo.h"

#include <cstdint>
#include <map>
#include <vector>

/** Texts about why a switch restarted. The catalogue covers far more causes than this platform can report. */
namespace ReloadCauses {

struct Cause {
   Lumo::String text;
   /** With what a person is to do; empty where the text says it all. */
   Lumo::String explanation;
};

extern const Lumo::String separator;
extern const Lumo::String rebootIsImminentKey;
extern const Lumo::String preRebootKey;
extern const std::vector<Cause> causes;
extern const Lumo::String kernelPanicHelp;
extern const Lumo::String kernelPanicHelpWithoutDebugging;
extern const Lumo::String noActionNecessary;
extern const Lumo::String kernelCrashPath;
extern const Lumo::String kernelPanicBackTracePath;
extern const Lumo::String kernelPanicBreadCrumbsPath;
extern const Lumo::String rebootTimestampPath;

/** The text for a cause that the platform can't name. */
extern const Lumo::String unknown;

} // namespace ReloadCauses

/** Cause of a restart by the exact content of the CPLD's reset reason register. */
extern std::map<uint8_t, Lumo::String> resetEvents;

#endif
