#pragma once

// The twinlanes command: parses the flags and plays the game in a window, or
// plays a scenario script in a window or headless. Returns the process's exit
// status: 0 on success, 1 when there is no display (or the game cannot
// start), 2 for a script that cannot be run, CLI11's own codes for bad flags.
int twinlanesMain(int argc, char** argv);
