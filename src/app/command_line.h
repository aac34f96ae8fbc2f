#pragma once

// The twinlanes command: parses the flags and runs the game's headless
// scenario mode (or explains how to, until the windowed game lands). Returns
// the process's exit status: 0 on success, 2 for a script that cannot be
// run, CLI11's own codes for bad flags.
int twinlanesMain(int argc, char** argv);
