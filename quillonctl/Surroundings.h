#ifndef SURROUNDINGS_H
#define SURROUNDINGS_H

#include <filesystem>

/** What the program needs around it, told before the library meets its absence. */
namespace Surroundings {

/** The folder of the program's own file, or nothing where it can't be known. */
std::filesystem::path programFolder();

/** Puts the process, and what it loads from now on, into simulation. */
void simulate();

/** Whether the library will run in simulation. */
bool isSimulation();

/** Makes the folder of the simulation files. @throw HostError when it can't be written to */
void requireSimulationFolder();

/** The socket of the SMBus server. */
std::filesystem::path serverSocket();

/** @throw HostError when nothing listens on the socket of the SMBus server */
void requireServer();

} // namespace Surroundings

#endif
