#include "cli/CommandLineJournal.h"

#include "cli/ResultWriter.h"
#include "removal/Journal.h"
#include "removal/Undo.h"
#include "review/StatusTexts.h"

#include <optional>

namespace CommandLineJournal {

namespace {

void writeLine(std::FILE* out, const QByteArray& line) {
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), out);
    std::fputc('\n', out);
}

QByteArray actionOf(const Journal::Removal& removal) {
    return removal.entries.isEmpty() ? QByteArray("none") : removal.entries.first().action.toUtf8();
}

void listRemovals(const QList<Journal::Removal>& removals, bool json, std::FILE* out) {
    for (const Journal::Removal& removal : removals) {
        const QByteArray time = removal.started.toString(Qt::ISODate).toUtf8();
        if (json) {
            writeLine(out,
                "{\"id\":" + ResultWriter::jsonString(removal.id.toUtf8()) + ",\"time\":\"" + time + "\",\"action\":\""
                    + actionOf(removal) + "\",\"count\":" + QByteArray::number(removal.doneCount())
                    + ",\"bytes\":" + QByteArray::number(removal.doneBytes())
                    + ",\"undone\":" + (removal.undone() ? "true" : "false") + '}');
        } else {
            writeLine(out,
                removal.id.toUtf8() + '\t' + time + '\t' + actionOf(removal) + '\t'
                    + ResultWriter::counted(removal.doneCount(), "item", "items") + '\t'
                    + StatusTexts::convertNumberToString(removal.doneBytes()).toUtf8()
                    + (removal.undone() ? "\tundone" : ""));
        }
    }
}

} // namespace

bool handles(const QByteArray& command) {
    return command == "journal" || command == "undo";
}

int run(const QList<QByteArray>& arguments, std::FILE* out, std::FILE* err) {
    const QByteArray command = arguments.value(0);
    bool json = false;
    bool list = command == "journal";
    bool yes = false;
    std::optional<QString> id;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QByteArray& argument = arguments[i];
        if (argument == "--format" && i + 1 < arguments.size()) {
            const QByteArray format = arguments[++i];
            if (format != "text" && format != "json") {
                std::fprintf(err, "twinsift: option '--format' takes text or json here\n");
                return 2;
            }
            json = format == "json";
        } else if (argument == "--list" && command == "undo") {
            list = true;
        } else if (argument == "--yes" && command == "undo") {
            yes = true;
        } else if (!argument.startsWith('-') && command == "undo" && !id) {
            id = QString::fromUtf8(argument);
        } else {
            std::fprintf(err, "twinsift: unknown option '%s' (see twinsift --help)\n", argument.constData());
            return 2;
        }
    }
    const QList<Journal::Removal> removals = Journal::list();
    if (list) {
        listRemovals(removals, json, out);
        std::fflush(out);
        return 0;
    }

    const Journal::Removal* chosen = nullptr;
    for (auto it = removals.crbegin(); it != removals.crend() && !chosen; ++it) {
        if (id ? it->id == *id : it->hasDone() && !it->undone())
            chosen = &*it;
    }
    if (!chosen) {
        std::fprintf(err, "twinsift: %s\n", id ? "no removal with that id" : "nothing to undo");
        return 1;
    }
    if (!yes) {
        for (auto it = chosen->entries.crbegin(); it != chosen->entries.crend(); ++it) {
            if (it->state != Journal::Entry::State::Done)
                continue;
            const QByteArray word = it->action == QLatin1String("delete") ? "cannot" : "undo";
            writeLine(out, word + '\t' + it->action.toUtf8() + '\t' + ResultWriter::textPath(it->path));
        }
        writeLine(out, "# " + chosen->id.toUtf8() + ": nothing changed: add --yes to put these back");
        std::fflush(out);
        return 0;
    }
    const QList<Undo::Result> results = Undo::undo(*chosen);
    qsizetype failed = 0;
    for (const Undo::Result& result : results) {
        failed += result.restored ? 0 : 1;
        QByteArray line = QByteArray(result.restored ? "restored" : "left") + '\t' + result.action.toUtf8() + '\t'
            + ResultWriter::textPath(result.path);
        if (!result.reason.isEmpty())
            line += '\t' + result.reason.toUtf8();
        writeLine(out, line);
    }
    writeLine(
        out, "# " + QByteArray::number(results.size() - failed) + " put back, " + QByteArray::number(failed) + " not");
    std::fflush(out);
    return failed ? 1 : 0;
}

} // namespace CommandLineJournal
