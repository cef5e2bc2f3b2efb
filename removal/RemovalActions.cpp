#include "removal/RemovalActions.h"

#include "engine/Log.h"
#include "engine/PathBytes.h"
#include "removal/FileOperations.h"
#include "removal/Trash.h"

#include <cerrno>

namespace RemovalActions {

namespace {

QString shown(const QByteArray& path) {
    return PathBytes::display(path);
}

// An error that does not name its file on its own carries the path, as a file error would.
QString errorWithPath(int error, const QByteArray& path) {
    return QStringLiteral("%1 (%2)").arg(FileOperations::errorText(error), shown(path));
}

Outcome outcomeFor(const DuplicateFilePtr& file, const QList<DuplicateGroupPtr>& groups) {
    Outcome outcome;
    outcome.file = file;
    if (const DuplicateGroupPtr group = groupOf(groups, file))
        outcome.keptCopy = group->original();
    return outcome;
}

enum class Replacement { Alias, Symlink, Hardlink };

QList<Outcome> replace(Replacement kind, const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    QList<Outcome> outcomes;
    for (const DuplicateFilePtr& file : files) {
        Outcome outcome = outcomeFor(file, groups);
        const QByteArray& u = file->urlFile();

        // The duplicate goes first; a failed removal does not stop the attempt to link.
        const int removeError = FileOperations::removeItem(u);
        if (removeError) {
            if (kind == Replacement::Hardlink)
                Log::line(QStringLiteral("error removing"));
            else
                Log::line(QStringLiteral("error removing %1").arg(errorWithPath(removeError, u)));
        }

        int linkError = 0;
        if (kind == Replacement::Alias) {
            // No link file can be made to a kept copy that cannot be found; nothing is logged then.
            if (outcome.keptCopy.isEmpty() || !FileOperations::exists(outcome.keptCopy)) {
                linkError = ENOENT;
            } else {
                const QByteArray aliasPath = u + ".Alise";
                linkError = FileOperations::writeAliasFile(aliasPath, outcome.keptCopy);
                if (linkError)
                    Log::line(QStringLiteral("::: %1").arg(errorWithPath(linkError, aliasPath)));
            }
        } else {
            if (outcome.keptCopy.isEmpty())
                linkError = ENOENT;
            else if (kind == Replacement::Symlink)
                linkError = FileOperations::makeSymbolicLink(u, outcome.keptCopy);
            else
                linkError = FileOperations::makeHardLink(u, outcome.keptCopy);
            if (linkError) {
                Log::line(QStringLiteral("erroring for file alising %1 with error %2")
                              .arg(shown(u), FileOperations::errorText(linkError)));
            }
        }

        outcome.done = !removeError && !linkError;
        if (removeError)
            outcome.error = FileOperations::errorText(removeError);
        else if (linkError)
            outcome.error
                = outcome.keptCopy.isEmpty() ? QStringLiteral("no kept copy") : FileOperations::errorText(linkError);
        outcomes.append(outcome);
    }
    return outcomes;
}

} // namespace

QStringList actionTitles() {
    return { QStringLiteral("Move to Trash"), QStringLiteral("Permanent Delete"), QStringLiteral("Replace with Alias"),
        QStringLiteral("Replace with Symlink"), QStringLiteral("Replace with Hardlink") };
}

QString title(Action action) {
    return actionTitles().at(static_cast<int>(action));
}

Action actionForTitle(const QString& text) {
    const QStringList titles = actionTitles();
    for (int i = 0; i < 4; ++i) {
        if (text == titles.at(i))
            return static_cast<Action>(i);
    }
    return Action::ReplaceWithHardlink;
}

DuplicateGroupPtr groupOf(const QList<DuplicateGroupPtr>& duplicateMainArray, const DuplicateFilePtr& file) {
    for (const DuplicateGroupPtr& group : duplicateMainArray) {
        if (group->listAll().contains(file))
            return group;
    }
    return nullptr;
}

QList<Outcome> movetotrash(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    QList<Outcome> outcomes;
    for (const DuplicateFilePtr& file : files) {
        Outcome outcome = outcomeFor(file, groups);
        const Trash::Result result = Trash::moveToTrash(file->urlFile());
        outcome.done = result.ok();
        if (!result.ok()) {
            outcome.error = FileOperations::errorText(result.error);
            Log::line(QStringLiteral("file %1 not removed").arg(shown(file->urlFile())));
        }
        outcomes.append(outcome);
    }
    return outcomes;
}

QList<Outcome> PermanentDelete(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    QList<Outcome> outcomes;
    for (const DuplicateFilePtr& file : files) {
        Outcome outcome = outcomeFor(file, groups);
        const int error = FileOperations::removeItem(file->urlFile());
        outcome.done = error == 0;
        if (error) {
            outcome.error = FileOperations::errorText(error);
            Log::line(QStringLiteral("file %1 not removed").arg(shown(file->urlFile())));
        }
        outcomes.append(outcome);
    }
    return outcomes;
}

QList<Outcome> makeAlias(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    return replace(Replacement::Alias, files, groups);
}

QList<Outcome> makeSymLink(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    return replace(Replacement::Symlink, files, groups);
}

QList<Outcome> makeHardLink(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    return replace(Replacement::Hardlink, files, groups);
}

QList<Outcome> run(Action action, const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    switch (action) {
    case Action::MoveToTrash:
        return movetotrash(files, groups);
    case Action::PermanentDelete:
        return PermanentDelete(files, groups);
    case Action::ReplaceWithAlias:
        return makeAlias(files, groups);
    case Action::ReplaceWithSymlink:
        return makeSymLink(files, groups);
    case Action::ReplaceWithHardlink:
        break;
    }
    return makeHardLink(files, groups);
}

} // namespace RemovalActions
