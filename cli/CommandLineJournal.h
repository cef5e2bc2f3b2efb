#pragma once

#include <QByteArray>
#include <QList>
#include <cstdio>

// The commands over the removal journal:
//   twinsift journal [--format text|json]      every recorded removal: id, time, action, items, bytes
//   twinsift undo [--list] [--yes] [ID]        puts back the last removal not yet undone (or ID):
//                                              without --yes only lists what it would put back
// Each answers the exit status (0, 1 when something could not be put back, 2 for bad usage).
namespace CommandLineJournal {

bool handles(const QByteArray& command);
int run(const QList<QByteArray>& arguments, std::FILE* out, std::FILE* err);

} // namespace CommandLineJournal
