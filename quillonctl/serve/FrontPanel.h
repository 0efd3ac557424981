#ifndef SERVE_FRONT_PANEL_H
#define SERVE_FRONT_PANEL_H

namespace Serve {

/** The page that draws the front panel, from the files in page/. */
extern const char* const frontPanel;

} // namespace Serve

#endif
