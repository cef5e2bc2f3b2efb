#pragma once

#include <QString>
#include <functional>

// Diagnostic lines of the program: one line per message, no levels, written to the system log
// (syslog, facility user) and to standard error. Never to standard output, which the command line
// keeps for results.
namespace Log {

void line(const QString& text);

// Replaces the destination of every line (tests collect them); an empty function restores the
// system log and standard error.
void setSink(std::function<void(const QString&)> sink);

// Writes one line to the system log only (for sinks that handle standard error themselves).
void writeSystemLog(const QString& text);

// Quiets standard error while keeping the system log (the command line's --quiet).
void setStderrEnabled(bool enabled);

} // namespace Log
