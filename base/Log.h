#pragma once

#include <QString>
#include <functional>

// Diagnostic lines of the program: one line per message, no levels, written to the system log
// (syslog, facility user, which the journal collects). They reach standard error only when asked
// for (TWINSIFT_VERBOSE=1 in the environment, or the command line's --verbose), and never standard
// output, which the command line keeps for results.
namespace Log {

void line(const QString& text);

// Replaces the destination of every line (tests collect them); an empty function restores the
// system log and standard error.
void setSink(std::function<void(const QString&)> sink);

// Writes one line to the system log only (for sinks that handle standard error themselves).
void writeSystemLog(const QString& text);

// Whether lines are copied to standard error (off unless TWINSIFT_VERBOSE is a non-zero number).
void setStderrEnabled(bool enabled);
bool stderrEnabled();

} // namespace Log
