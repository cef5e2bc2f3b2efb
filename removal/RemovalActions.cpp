#include "removal/RemovalActions.h"

#include "base/FileSystem.h"
#include "base/Log.h"
#include "base/PathBytes.h"
#include "removal/FileOperations.h"
#include "removal/RemovalRun.h"
#include "removal/ScannedItem.h"
#include "removal/Trash.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace RemovalActions {

namespace {

QString shown(const QByteArray& path) {
    return PathBytes::display(path);
}

// An error that does not name its file on its own carries the path, as a file error would.
QString errorWithPath(int error, const QByteArray& path) {
    return QStringLiteral("%1 (%2)").arg(FileOperations::errorText(error), shown(path));
}

std::function<void(const QByteArray&)>& checkedHook() {
    static std::function<void(const QByteArray&)> hook;
    return hook;
}

Outcome leftAlone(Outcome outcome, const QString& reason) {
    outcome.left = true;
    outcome.error = reason;
    Log::line(QStringLiteral("%1 left alone: %2").arg(shown(outcome.file->urlFile()), reason));
    return outcome;
}

bool sameFolder(int a, int b) {
    struct stat sa;
    struct stat sb;
    return ::fstat(a, &sa) == 0 && ::fstat(b, &sb) == 0 && sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
}

// The action itself, on the open folder that holds the checked item. Logs what failed.
Outcome carryOut(Action action, Outcome outcome, const ScannedItem::Place& item, const ScannedItem::Place& kept,
    const ItemIdentity& identity) {
    const QByteArray& u = outcome.file->urlFile();
    const int dirFd = item.folder.get();
    int error = 0;
    switch (action) {
    case Action::MoveToTrash:
    case Action::PermanentDelete:
        if (action == Action::MoveToTrash) {
            const Trash::Result trashed = Trash::moveToTrashAt(dirFd, item.leaf, u, identity.device);
            error = trashed.error;
            outcome.leftBehind = trashed.trashedPath;
            outcome.trashInfo
                = trashed.trashDirectory + "/info/" + PathBytes::lastPathComponent(trashed.trashedPath) + ".trashinfo";
        } else {
            error = FileOperations::removeAt(dirFd, item.leaf);
        }
        if (error)
            Log::line(QStringLiteral("file %1 not removed").arg(shown(u)));
        break;
    case Action::ReplaceWithAlias: {
        // The link file comes first and goes again when the item cannot be removed.
        const QByteArray aliasLeaf = item.leaf + ".Alise";
        error = FileOperations::writeAliasFileAt(dirFd, aliasLeaf, outcome.keptCopy);
        if (error) {
            Log::line(QStringLiteral("::: %1").arg(errorWithPath(error, u + ".Alise")));
            break;
        }
        outcome.leftBehind = u + ".Alise";
        error = FileOperations::removeAt(dirFd, item.leaf);
        if (error) {
            Log::line(QStringLiteral("error removing %1").arg(errorWithPath(error, u)));
            if (ScannedItem::identityAt(dirFd, item.leaf).known)
                ::unlinkat(dirFd, aliasLeaf.constData(), 0);
        }
        break;
    }
    case Action::ReplaceWithSymlink:
    case Action::ReplaceWithHardlink: {
        const QByteArray target = outcome.keptCopy;
        const int keptFd = kept.folder.get();
        const QByteArray keptLeaf = kept.leaf;
        error = FileOperations::replaceAt(dirFd, item.leaf, [&](int folder, const char* name) {
            const int made = action == Action::ReplaceWithSymlink
                ? ::symlinkat(target.constData(), folder, name)
                : ::linkat(keptFd, keptLeaf.constData(), folder, name, 0);
            return made == 0 ? 0 : errno;
        });
        if (error) {
            Log::line(QStringLiteral("erroring for file alising %1 with error %2")
                          .arg(shown(u), FileOperations::errorText(error)));
        }
        outcome.leftBehind = u;
        break;
    }
    }
    outcome.done = error == 0;
    if (error)
        outcome.error = FileOperations::errorText(error);
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

DuplicateGroupPtr groupOf(const QList<DuplicateGroupPtr>& duplicateMainArray, const DuplicateFilePtr& file) {
    for (const DuplicateGroupPtr& group : duplicateMainArray) {
        if (group->listAll().contains(file))
            return group;
    }
    return nullptr;
}

void setCheckedHook(std::function<void(const QByteArray&)> hook) {
    checkedHook() = std::move(hook);
}

QStringList actionWords() {
    return { QStringLiteral("trash"), QStringLiteral("delete"), QStringLiteral("alias"), QStringLiteral("symlink"),
        QStringLiteral("hardlink") };
}

QString changedText() {
    return QStringLiteral("changed since the scan");
}

QString differsText() {
    return QStringLiteral("differs from the kept copy");
}

Outcome actOn(Action action, const RemovalPlan::Item& item, ScannedItem::Resolver& resolver, Journal* journal) {
    Outcome outcome;
    outcome.file = item.file;
    outcome.keptCopy = item.kept ? item.kept->urlFile() : QByteArray();
    if (item.isLeft())
        return leftAlone(outcome, item.leftReason);
    const ItemIdentity& seen = item.file->identity();
    const ItemIdentity& keptSeen = item.kept->identity();

    const ScannedItem::Place place = resolver.reach(item.file->urlFile());
    if (!place.ok() || !ScannedItem::unchanged(seen, ScannedItem::identityAt(place.folder.get(), place.leaf)))
        return leftAlone(outcome, changedText());
    const ScannedItem::Place kept = resolver.reach(outcome.keptCopy);
    const ItemIdentity keptNow = kept.ok() ? ScannedItem::identityAt(kept.folder.get(), kept.leaf) : ItemIdentity();
    if (!ScannedItem::unchanged(keptSeen, keptNow))
        return leftAlone(outcome, QStringLiteral("the kept copy changed since the scan"));
    if (seen.sameFileAs(keptNow))
        return leftAlone(outcome, RemovalPlan::sameFileText());

    // A link that cannot be made must not cost the item: refused before anything is compared.
    if (action == Action::ReplaceWithHardlink && (seen.folder || seen.device != keptNow.device)) {
        const int error = seen.folder ? EPERM : EXDEV;
        Log::line(QStringLiteral("erroring for file alising %1 with error %2")
                      .arg(shown(item.file->urlFile()), FileOperations::errorText(error)));
        outcome.error = FileOperations::errorText(error);
        return outcome;
    }

    QByteArray digest;
    switch (ScannedItem::compare(place, kept, seen.folder, &digest)) {
    case ScannedItem::Comparison::Equal:
        break;
    case ScannedItem::Comparison::Different:
        return leftAlone(outcome, differsText());
    case ScannedItem::Comparison::Unreadable:
        return leftAlone(outcome, QStringLiteral("could not be compared with the kept copy"));
    case ScannedItem::Comparison::OtherMount:
        return leftAlone(outcome, QStringLiteral("holds another mount"));
    }

    if (checkedHook())
        checkedHook()(item.file->urlFile());
    // Still the same folder at the recorded path, and still the same item in it, just before acting.
    const ScannedItem::Place again = resolver.reach(item.file->urlFile());
    if (!again.ok() || !sameFolder(again.folder.get(), place.folder.get())
        || !ScannedItem::unchanged(seen, ScannedItem::identityAt(place.folder.get(), place.leaf)))
        return leftAlone(outcome, changedText());
    qint64 seq = 0;
    if (journal) {
        struct stat st;
        Journal::Entry entry;
        entry.action = actionWords().at(static_cast<int>(action));
        entry.path = item.file->urlFile();
        entry.size = seen.size;
        entry.modifiedNs = seen.modifiedNs;
        entry.mode = ::fstatat(place.folder.get(), place.leaf.constData(), &st, AT_SYMLINK_NOFOLLOW) == 0
            ? static_cast<uint>(st.st_mode & 07777)
            : 0644u;
        entry.digest = digest;
        entry.kept = outcome.keptCopy;
        seq = journal->begin(entry);
        if (seq < 0)
            return leftAlone(outcome, QStringLiteral("the journal could not be written"));
    }
    outcome = carryOut(action, outcome, place, kept, seen);
    if (journal) {
        if (outcome.done)
            journal->done(seq, outcome.leftBehind, outcome.trashInfo);
        else
            journal->failed(seq, outcome.error);
    }
    return outcome;
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

QList<Outcome> run(Action action, const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups,
    const QList<QByteArray>& roots, const QList<QByteArray>& protectedFolders) {
    RemovalRun removal(action, files, groups, roots, protectedFolders);
    while (!removal.atEnd())
        removal.step();
    return removal.outcomes();
}

} // namespace RemovalActions
