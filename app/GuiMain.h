#pragma once

// Starts the window application and runs it until its window closes.
int runGui(int argc, char* argv[]);
