#ifndef QUILLON_H
#define QUILLON_H

#include "quillon/ql.h"

#include "QLSocket.h"

/** The one socket to the SMBus server; null until qlSockInit has succeeded. */
extern QuillonLibrary::QLSocket* _qlSock;

/** Tries of an init function to reach the SMBus server. */
constexpr int socketTries = 30;

/**
 * Connects the socket and loads the topology; what every init function does.
 * @param caller name for the trace lines
 * @param json topology text
 * @param retries tries to connect, a second apart
 */
ql_status quillonLibraryInit( const char* caller, const char* json, int retries );

/** Connects the socket unless it is connected. Sleeps a second after each failed try. */
ql_status qlSockInit( const char* caller, int retries );

#endif
