#pragma once

#include <QByteArray>
#include <QList>
#include <cstdio>

// The `twinsift` command line: `scan` and `photos` run a scan with the stored settings (options
// override them for this run only and never write the store) and print the groups. Arguments are
// taken as the raw bytes of argv, so any file name can be given.
namespace CommandLine {

enum ExitStatus { Success = 0, Failure = 1, Usage = 2 };

int run(const QList<QByteArray>& arguments, std::FILE* out = stdout, std::FILE* err = stderr);

} // namespace CommandLine
