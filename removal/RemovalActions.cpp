#include "removal/RemovalActions.h"

#include "base/FileSystem.h"
#include "base/Log.h"
#include "base/PathBytes.h"
#include "removal/FileOperations.h"
#include "removal/RemovalRun.h"
#include "removal/Trash.h"

#include <algorithm>
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

// Why a replacement would certainly leave nothing in the file's place, checked before the file is
// removed: then it stays. 0 when the link can be attempted.
int replacementBlocked(const QByteArray& path, const QByteArray& keptCopy, bool hardLink) {
    if (keptCopy.isEmpty())
        return ENOENT;
    FileSystem::ItemInfo kept;
    if (!FileSystem::stat(keptCopy, kept))
        return ENOENT;
    if (!hardLink)
        return 0;
    if (kept.kind == FileSystem::Kind::Directory)
        return EPERM;
    FileSystem::ItemInfo folder;
    if (FileSystem::stat(PathBytes::deletingLastPathComponent(path), folder) && folder.device != kept.device)
        return EXDEV;
    return 0;
}

enum class Replacement { Alias, Symlink, Hardlink };

Outcome replaceOne(Replacement kind, const DuplicateFilePtr& file, const QByteArray& keptCopy) {
    Outcome outcome;
    outcome.file = file;
    outcome.keptCopy = keptCopy;
    const QByteArray& u = file->urlFile();

    // Every copy of the group was chosen: the kept one stays, the others will point at it.
    if (u == outcome.keptCopy) {
        Log::line(QStringLiteral("file %1 not removed").arg(shown(u)));
        outcome.error = QStringLiteral("kept copy");
        return outcome;
    }
    // A link that cannot be made must not cost the file: with no kept copy to point at, or a
    // hard link that cannot reach it, the duplicate stays where it is.
    if (const int blocked = replacementBlocked(u, outcome.keptCopy, kind == Replacement::Hardlink)) {
        if (kind == Replacement::Alias)
            Log::line(QStringLiteral("::: %1").arg(errorWithPath(blocked, u + ".Alise")));
        else
            Log::line(QStringLiteral("erroring for file alising %1 with error %2")
                          .arg(shown(u), FileOperations::errorText(blocked)));
        outcome.error
            = outcome.keptCopy.isEmpty() ? QStringLiteral("no kept copy") : FileOperations::errorText(blocked);
        return outcome;
    }

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
        const QByteArray aliasPath = u + ".Alise";
        linkError = FileOperations::writeAliasFile(aliasPath, outcome.keptCopy);
        if (linkError)
            Log::line(QStringLiteral("::: %1").arg(errorWithPath(linkError, aliasPath)));
    } else {
        if (kind == Replacement::Symlink)
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
        outcome.error = FileOperations::errorText(linkError);
    return outcome;
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

QByteArray keptCopyOf(const DuplicateGroupPtr& group, const QList<DuplicateFilePtr>& chosen) {
    return keptCopyOf(*group, [&chosen](const DuplicateFilePtr& file) { return chosen.contains(file); });
}

QByteArray keptCopyOf(const duplicates& group, const std::function<bool(const DuplicateFilePtr&)>& isChosen) {
    const QList<DuplicateFilePtr>& members = group.listAll();
    const bool originalChosen = std::any_of(members.cbegin(), members.cend(),
        [&](const DuplicateFilePtr& file) { return file->urlFile() == group.original() && isChosen(file); });
    if (!originalChosen)
        return group.original();
    for (const DuplicateFilePtr& member : members) {
        if (!isChosen(member))
            return member->urlFile();
    }
    return group.original();
}

DuplicateGroupPtr groupOf(const QList<DuplicateGroupPtr>& duplicateMainArray, const DuplicateFilePtr& file) {
    for (const DuplicateGroupPtr& group : duplicateMainArray) {
        if (group->listAll().contains(file))
            return group;
    }
    return nullptr;
}

Outcome runOne(Action action, const DuplicateFilePtr& file, const QByteArray& keptCopy) {
    switch (action) {
    case Action::MoveToTrash:
    case Action::PermanentDelete: {
        Outcome outcome;
        outcome.file = file;
        outcome.keptCopy = keptCopy;
        const int error = action == Action::MoveToTrash ? Trash::moveToTrash(file->urlFile()).error
                                                        : FileOperations::removeItem(file->urlFile());
        outcome.done = error == 0;
        if (error) {
            outcome.error = FileOperations::errorText(error);
            Log::line(QStringLiteral("file %1 not removed").arg(shown(file->urlFile())));
        }
        return outcome;
    }
    case Action::ReplaceWithAlias:
        return replaceOne(Replacement::Alias, file, keptCopy);
    case Action::ReplaceWithSymlink:
        return replaceOne(Replacement::Symlink, file, keptCopy);
    case Action::ReplaceWithHardlink:
        break;
    }
    return replaceOne(Replacement::Hardlink, file, keptCopy);
}

QList<Outcome> movetotrash(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    return run(Action::MoveToTrash, files, groups);
}

QList<Outcome> PermanentDelete(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    return run(Action::PermanentDelete, files, groups);
}

QList<Outcome> makeAlias(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    return run(Action::ReplaceWithAlias, files, groups);
}

QList<Outcome> makeSymLink(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    return run(Action::ReplaceWithSymlink, files, groups);
}

QList<Outcome> makeHardLink(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    return run(Action::ReplaceWithHardlink, files, groups);
}

QList<Outcome> run(Action action, const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups) {
    RemovalRun removal(action, files, groups);
    while (!removal.atEnd())
        removal.step();
    return removal.outcomes();
}

} // namespace RemovalActions
