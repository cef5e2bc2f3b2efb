#pragma once

// Starts the window application and runs it until its window closes.
int runGui(int argc, char* argv[]);

// Without a desktop session the toolkit finds no icon theme; the freedesktop icon folders are
// searched then and Adwaita is used (the file-type icons of the lists come from the theme).
void ensureIconTheme();
