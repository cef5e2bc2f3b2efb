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

QByteArray fileLine(const QByteArray& word, const QByteArray& path, const QByteArray& kept) {
    return word + '\t' + ResultWriter::textPath(path) + '\t' + ResultWriter::textPath(kept);
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
        const RemovalPlan plan(chosen, state.duplicateMainArray);
        qint64 bytes = 0;
        for (const RemovalPlan::Item& item : plan.items()) {
            const QByteArray kept = item.kept ? item.kept->urlFile() : QByteArray();
            if (item.isLeft()) {
                writeLine(out, fileLine("left", item.file->urlFile(), kept) + '\t' + item.leftReason.toUtf8());
                continue;
            }
            writeLine(out, fileLine(word, item.file->urlFile(), kept));
            if (item.container < 0)
                bytes += item.group->sizeFile();
        }
        const qsizetype acting = static_cast<qsizetype>(plan.items().size()) - plan.leftCount();
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
            writeLine(out,
                fileLine(kDoneWords[static_cast<int>(*request.action)], outcome.file->urlFile(), outcome.keptCopy));
        } else if (outcome.left) {
            ++left;
            writeLine(out, fileLine("left", outcome.file->urlFile(), outcome.keptCopy) + '\t' + outcome.error.toUtf8());
        } else {
            ++failed;
            writeLine(
                out, fileLine("failed", outcome.file->urlFile(), outcome.keptCopy) + '\t' + outcome.error.toUtf8());
        }
    }
    review.refreshAndReload();
    writeLine(out,
        "# " + QByteArray::number(outcomes.size() - failed - left) + " done, " + QByteArray::number(failed)
            + " failed, " + QByteArray::number(left)
            + " left alone; remaining: " + ResultWriter::counted(state.duplicateMainArray.size(), "group", "groups")
            + ", " + ResultWriter::counted(state.totalDuplicateCount.load(), "duplicate", "duplicates") + " taking "
            + StatusTexts::convertNumberToString(static_cast<qint64>(state.wastedSpaceDuplicates.load())).toUtf8());
    std::fflush(out);
    return failed > 0 || left > 0 ? 1 : 0;
}

} // namespace CommandLineRemoval
