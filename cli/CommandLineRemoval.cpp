#include "cli/CommandLineRemoval.h"

#include "cli/ResultWriter.h"

#include "engine/ScanState.h"
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
        const QByteArray word = request.action ? actionWord(*request.action) : QByteArrayLiteral("chosen");
        qint64 bytes = 0;
        for (const DuplicateFilePtr& file : chosen) {
            const DuplicateGroupPtr group = RemovalActions::groupOf(state.duplicateMainArray, file);
            writeLine(out, fileLine(word, file->urlFile(), group ? group->original() : QByteArray()));
            bytes += group ? group->sizeFile() : 0;
        }
        QByteArray summary = "# " + ResultWriter::counted(chosen.size(), "file", "files") + " chosen in "
            + ResultWriter::counted(groups, "group", "groups") + " ("
            + StatusTexts::convertNumberToString(bytes).toUtf8() + ")";
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
    for (const RemovalActions::Outcome& outcome : outcomes) {
        if (outcome.done) {
            writeLine(out,
                fileLine(kDoneWords[static_cast<int>(*request.action)], outcome.file->urlFile(), outcome.keptCopy));
        } else {
            ++failed;
            writeLine(
                out, fileLine("failed", outcome.file->urlFile(), outcome.keptCopy) + '\t' + outcome.error.toUtf8());
        }
    }
    review.refreshAndReload();
    writeLine(out,
        "# " + QByteArray::number(outcomes.size() - failed) + " done, " + QByteArray::number(failed)
            + " failed; left: " + ResultWriter::counted(state.duplicateMainArray.size(), "group", "groups") + ", "
            + ResultWriter::counted(state.totalDuplicateCount.load(), "duplicate", "duplicates") + " taking "
            + StatusTexts::convertNumberToString(static_cast<qint64>(state.wastedSpaceDuplicates.load())).toUtf8());
    std::fflush(out);
    return failed > 0 ? 1 : 0;
}

} // namespace CommandLineRemoval
