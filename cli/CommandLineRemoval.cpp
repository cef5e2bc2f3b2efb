#include "cli/CommandLineRemoval.h"

#include "cli/ResultWriter.h"

#include "engine/ScanState.h"
#include "removal/RemovalPlan.h"
#include "removal/RemovalReview.h"
#include "review/ResultLists.h"
#include "review/Selection.h"
#include "review/StatusTexts.h"

namespace CommandLineRemoval {

namespace {

const char* const kWords[] = { "trash", "delete", "alias", "symlink", "hardlink" };
const char* const kDoneWords[] = { "trashed", "deleted", "aliased", "symlinked", "hardlinked" };

void writeLine(std::FILE* out, const QByteArray& line) {
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), out);
    std::fputc('\n', out);
}

// One item of the plan or of its outcome: tab-separated text, or one JSON object per line.
void writeItem(std::FILE* out, bool json, const QByteArray& word, const QByteArray& path, const QByteArray& kept,
    const QString& reason = QString()) {
    if (json) {
        QByteArray line = "{\"status\":\"" + word + "\",\"path\":" + ResultWriter::jsonString(path)
            + ",\"kept\":" + (kept.isEmpty() ? QByteArray("null") : ResultWriter::jsonString(kept));
        if (!reason.isEmpty())
            line += ",\"reason\":" + ResultWriter::jsonString(reason.toUtf8());
        writeLine(out, line + '}');
        return;
    }
    QByteArray line = word + '\t' + ResultWriter::textPath(path) + '\t' + ResultWriter::textPath(kept);
    if (!reason.isEmpty())
        line += '\t' + reason.toUtf8();
    writeLine(out, line);
}

QByteArray jsonCount(const char* name, qint64 value) {
    return '"' + QByteArray(name) + "\":" + QByteArray::number(value);
}

} // namespace

QByteArray actionWord(RemovalActions::Action action) {
    return kWords[static_cast<int>(action)];
}

std::optional<RemovalActions::Action> actionOfWord(const QByteArray& word) {
    for (int i = 0; i < 5; ++i) {
        if (word == kWords[i])
            return static_cast<RemovalActions::Action>(i);
    }
    return std::nullopt;
}

int run(ScanState& state, const Request& request, std::FILE* out) {
    Selection selection;
    selection.setProtectedFolders(state.settings.protectedFolderList);
    ResultLists lists(state, selection);
    const QString rule = request.keep == Keep::Newest ? Selection::keepNewestTitle() : Selection::keepOldestTitle();
    selection.AutoSelectAction(rule, state.duplicateMainArray);
    // The replacements link to a group's original. Keeping the newest chooses the oldest copy,
    // which is the original, so the copy kept becomes the original here: otherwise a link would be
    // made to a file that the same run removes.
    if (request.keep == Keep::Newest) {
        for (const DuplicateGroupPtr& group : state.duplicateMainArray) {
            if (!group->listAll().isEmpty())
                group->setOriginal(group->listAll().last()->urlFile());
        }
    }

    const QList<DuplicateFilePtr> chosen = selection.duplicateSelectedArray;
    const qsizetype groups = state.duplicateMainArray.size();
    if (!request.action || !request.yes) {
        // The plan as it will be carried out: what each item's kept copy is, and which items are
        // left alone so that every content keeps a copy.
        const QByteArray word = request.action ? actionWord(*request.action) : QByteArrayLiteral("chosen");
        const RemovalPlan plan(chosen, state.duplicateMainArray, state.settings.protectedFolderList);
        qint64 bytes = 0;
        for (const RemovalPlan::Item& item : plan.items()) {
            const QByteArray kept = item.kept ? item.kept->urlFile() : QByteArray();
            if (item.isLeft()) {
                writeItem(out, request.json, "left", item.file->urlFile(), kept, item.leftReason);
                continue;
            }
            writeItem(out, request.json, word, item.file->urlFile(), kept);
            if (item.container < 0)
                bytes += item.group->sizeFile();
        }
        const qsizetype acting = static_cast<qsizetype>(plan.items().size()) - plan.leftCount();
        if (request.json) {
            writeLine(out,
                "{\"summary\":{" + jsonCount("chosen", acting) + ',' + jsonCount("left", plan.leftCount()) + ','
                    + jsonCount("groups", groups) + ',' + jsonCount("bytes", bytes) + ",\"changed\":false}}");
            std::fflush(out);
            return 0;
        }
        QByteArray summary = "# " + ResultWriter::counted(acting, "file", "files") + " chosen in "
            + ResultWriter::counted(groups, "group", "groups") + " ("
            + StatusTexts::convertNumberToString(bytes).toUtf8() + ")";
        if (plan.leftCount() > 0)
            summary += ", " + QByteArray::number(plan.leftCount()) + " left alone";
        if (request.action)
            summary += "; nothing changed: add --yes to " + actionWord(*request.action) + " them";
        writeLine(out, summary);
        std::fflush(out);
        return 0;
    }

    const QList<FileDictionary> noOlderSelection;
    RemovalReview review(state, selection, lists, noOlderSelection);
    const QList<RemovalActions::Outcome> outcomes = review.runAction(*request.action);
    qsizetype failed = 0;
    qsizetype left = 0;
    for (const RemovalActions::Outcome& outcome : outcomes) {
        if (outcome.done) {
            writeItem(out, request.json, kDoneWords[static_cast<int>(*request.action)], outcome.file->urlFile(),
                outcome.keptCopy);
        } else if (outcome.left) {
            ++left;
            writeItem(out, request.json, "left", outcome.file->urlFile(), outcome.keptCopy, outcome.error);
        } else {
            ++failed;
            writeItem(out, request.json, "failed", outcome.file->urlFile(), outcome.keptCopy, outcome.error);
        }
    }
    review.refreshAndReload();
    const qsizetype done = outcomes.size() - failed - left;
    if (request.json) {
        writeLine(out,
            "{\"summary\":{" + jsonCount("done", done) + ',' + jsonCount("failed", failed) + ','
                + jsonCount("left", left) + ',' + jsonCount("groups", state.duplicateMainArray.size()) + ','
                + jsonCount("totalDuplicateCount", static_cast<qint64>(state.totalDuplicateCount.load())) + ','
                + jsonCount("wastedSpaceDuplicates", static_cast<qint64>(state.wastedSpaceDuplicates.load()))
                + ",\"changed\":true}}");
        std::fflush(out);
        return failed > 0 || left > 0 ? 1 : 0;
    }
    writeLine(out,
        "# " + QByteArray::number(done) + " done, " + QByteArray::number(failed) + " failed, "
            + QByteArray::number(left)
            + " left alone; remaining: " + ResultWriter::counted(state.duplicateMainArray.size(), "group", "groups")
            + ", " + ResultWriter::counted(state.totalDuplicateCount.load(), "duplicate", "duplicates") + " taking "
            + StatusTexts::convertNumberToString(static_cast<qint64>(state.wastedSpaceDuplicates.load())).toUtf8());
    std::fflush(out);
    return failed > 0 || left > 0 ? 1 : 0;
}

} // namespace CommandLineRemoval
