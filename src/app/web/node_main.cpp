#include "app/command_line.h"

// The scenario runner under node, from the browser build: the same command
// as the desktop's, with no window system (scripts run headless only) and
// the page-less fallbacks of the browser backend. Emscripten's NODERAWFS
// gives it the real file system for --prefs-dir, --script and the resources.
int main(int argc, char** argv) {
  return twinlanesMain(argc, argv, ProgramBackend{});
}
