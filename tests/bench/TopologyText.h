#ifndef BENCH_TOPOLOGY_TEXT_H
#define BENCH_TOPOLOGY_TEXT_H

#include <string>

/**
 * A topology document as a large chassis has it: a PCI controller whose accelerators and busses carry most of
 * the devices, sensors behind multiplexers, an I2C medium and a few devices of the file system. Most devices
 * name a driver with its arguments, many have labels or components.
 *
 * @param devices how many devices, with the ids from 1
 * @param pci address of the controller, which makes one text differ from another
 */
std::string topologyText( int devices, int pci );

/** An I2C medium, bus 3, with devices of the ids from 1 and nothing else. */
std::string flatTopologyText( int devices );

#endif
