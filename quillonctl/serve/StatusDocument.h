#ifndef SERVE_STATUS_DOCUMENT_H
#define SERVE_STATUS_DOCUMENT_H

#include "Snapshot.h"

#include <string>

namespace Serve {

/** The snapshot as the page takes it: the document of `quillonctl --json status`, and how old it is. */
std::string statusDocument(
   const Snapshot& snapshot, const std::string& board, std::chrono::duration<double> interval );

} // namespace Serve

#endif
