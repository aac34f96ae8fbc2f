#include "app/command_line.h"

// The application's entry point: the command line decides how the
// application (with AppDelegate as its delegate) runs.
int main(int argc, char** argv) {
  return twinlanesMain(argc, argv);
}
