#pragma once

#include "removal/RemovalActions.h"

#include <QByteArray>
#include <cstdio>
#include <optional>

struct ScanState;

// Removal from the command line, after a folder scan: chooses copies over all groups with the
// result screen's automatic rule, prints the plan, and carries it out only when asked to.
//
// Every file gets one line of tab-separated fields: what is (or was) done, its path, the kept
// copy, and for a failure or an item left alone ("left") the reason. The plan shows the items it
// leaves so that every content keeps a copy; the run also those that changed since the scan.
// Paths are escaped as in the plain listing (ResultWriter::textPath), so that a line is always one
// file. A summary line starting with "#" ends the output. In JSON, each item is one object per line
// ({"status", "path", "kept", "reason"}) and a last object {"summary": {...}} sums up.
namespace CommandLineRemoval {

enum class Keep { Newest, Oldest };

struct Request {
    Keep keep = Keep::Oldest;
    std::optional<RemovalActions::Action> action; // none: only list the chosen files
    bool yes = false; // carry the action out
    bool json = false; // one JSON object per line instead of tab-separated text
};

// The command-line word of an action (trash, delete, alias, symlink, hardlink) and back.
QByteArray actionWord(RemovalActions::Action action);
std::optional<RemovalActions::Action> actionOfWord(const QByteArray& word);

// Chooses, prints and (with `yes`) acts. Answers 1 when any file failed or was left alone, else 0.
int run(ScanState& state, const Request& request, std::FILE* out);

} // namespace CommandLineRemoval
