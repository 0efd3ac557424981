#ifndef FUZZ_CHECKED_LIBRARY_H
#define FUZZ_CHECKED_LIBRARY_H

#include <string>

/**
 * Whether `quillonctl check` finds no error in the documents of a board. What it says must lie in the
 * documents.
 */
bool checkPasses( const std::string& topology, const std::string& objects );

/**
 * Whether a text is one that the library may get although it is no JSON: it parses by recursion, and what is
 * nested without end would use up its stack.
 */
bool isNestedShallowly( const std::string& text );

/**
 * Lets the library forget its devices, so that the next input finds it as the one before did. It gets no
 * simulated access, which leaves a mapping behind each time.
 */
void forgetDevices();

#endif
