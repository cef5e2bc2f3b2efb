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

// The action itself, on the open folder that holds the checked item. Logs what failed.
Outcome carryOut(Action action, Outcome outcome, const ScannedItem::Place& item, const ScannedItem::Place& kept,
    const ItemIdentity& identity) {
    const QByteArray& u = outcome.file->urlFile();
    const int dirFd = item.fd();
    int error = 0;
    switch (action) {
    case Action::MoveToTrash:
    case Action::PermanentDelete:
        if (action == Action::MoveToTrash) {
            const Trash::Result trashed = Trash::moveToTrashAt(dirFd, item.leaf, u, identity.device);
            error = trashed.error;
            outcome.leftBehind = trashed.trashedPath;
            outcome.trashInfo = trashed.infoPath;
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
        const int keptFd = kept.fd();
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
    static const QStringList words { QStringLiteral("trash"), QStringLiteral("delete"), QStringLiteral("alias"),
        QStringLiteral("symlink"), QStringLiteral("hardlink") };
    return words;
}

QString changedText() {
    return QStringLiteral("changed since the scan");
}

QString differsText() {
    return QStringLiteral("differs from the kept copy");
}

namespace {

// What the checks before acting found.
struct Checked {
    ScannedItem::Place place;
    ScannedItem::Place kept;
    ScannedItem::Look item;
    QByteArray digest; // of a file's bytes, as compared
    QString leftReason; // why the item is left alone; empty when it may be acted on
    int refused = 0; // the error of a link that cannot be made
};

// Reaches the item and its kept copy, checks that both are what the scan saw and that they are
// not one file, and compares them; only reads.
Checked check(Action action, const RemovalPlan::Item& item, ScannedItem::Resolver& resolver) {
    Checked c;
    const ItemIdentity& seen = item.file->identity();
    c.place = resolver.reach(item.file->urlFile());
    c.item = ScannedItem::look(c.place, seen.folder);
    if (!ScannedItem::unchanged(seen, c.item.identity)) {
        c.leftReason = changedText();
        return c;
    }
    c.kept = resolver.reach(item.kept->urlFile());
    ScannedItem::Look kept = ScannedItem::look(c.kept, item.kept->identity().folder);
    if (!ScannedItem::unchanged(item.kept->identity(), kept.identity)) {
        c.leftReason = QStringLiteral("the kept copy changed since the scan");
        return c;
    }
    if (seen.sameFileAs(kept.identity)) {
        c.leftReason = RemovalPlan::sameFileText();
        return c;
    }
    // A link that cannot be made must not cost the item: refused before anything is compared.
    if (action == Action::ReplaceWithHardlink && (seen.folder || seen.device != kept.identity.device)) {
        c.refused = seen.folder ? EPERM : EXDEV;
        return c;
    }
    ScannedItem::Comparison result = ScannedItem::Comparison::Unreadable;
    if (seen.folder)
        result = ScannedItem::compare(c.place, c.kept, true);
    else if (c.item.identity.size != kept.identity.size)
        result = ScannedItem::Comparison::Different;
    else if (c.item.file.isValid() && kept.file.isValid())
        result = ScannedItem::compareOpen(c.item.file.get(), kept.file.get(), seen.size, &c.digest);
    c.item.file = FileSystem::Fd();
    switch (result) {
    case ScannedItem::Comparison::Equal:
        break;
    case ScannedItem::Comparison::Different:
        c.leftReason = differsText();
        break;
    case ScannedItem::Comparison::Unreadable:
        c.leftReason = QStringLiteral("could not be compared with the kept copy");
        break;
    case ScannedItem::Comparison::OtherMount:
        c.leftReason = QStringLiteral("holds another mount");
        break;
    }
    return c;
}

} // namespace

Outcome actOn(Action action, const RemovalPlan::Item& item, ScannedItem::Resolver& resolver, Journal* journal) {
    Outcome outcome;
    outcome.file = item.file;
    outcome.keptCopy = item.kept ? item.kept->urlFile() : QByteArray();
    if (item.isLeft())
        return leftAlone(outcome, item.leftReason);
    const ItemIdentity& seen = item.file->identity();
    // Folders stay open from one item to the next. One that moved away from its path since holds
    // what the path no longer leads to: a check that fails in such a folder is made once more with
    // every folder reached again from its scan target.
    for (bool again = false;; again = true) {
        const Checked c = check(action, item, resolver);
        const bool kept = c.place.cached || c.kept.cached;
        if (!c.leftReason.isEmpty() && kept && !again) {
            resolver.forget();
            continue;
        }
        if (c.refused) {
            Log::line(QStringLiteral("erroring for file alising %1 with error %2")
                          .arg(shown(item.file->urlFile()), FileOperations::errorText(c.refused)));
            outcome.error = FileOperations::errorText(c.refused);
            return outcome;
        }
        if (!c.leftReason.isEmpty())
            return leftAlone(outcome, c.leftReason);

        if (checkedHook())
            checkedHook()(item.file->urlFile());
        // Just before acting: the item's path still leads to the folder checked, and the item is
        // still the one the scan saw. A symbolic link or link file names the kept copy by its path,
        // which has to lead to the copy checked too.
        const bool linksByPath = action == Action::ReplaceWithSymlink || action == Action::ReplaceWithAlias;
        if (!resolver.stillLeadsTo(c.place) || (linksByPath && !resolver.stillLeadsTo(c.kept))
            || !ScannedItem::unchanged(seen, ScannedItem::identityAt(c.place.fd(), c.place.leaf))) {
            if (kept && !again) {
                resolver.forget();
                continue;
            }
            return leftAlone(outcome, changedText());
        }
        qint64 seq = 0;
        if (journal) {
            Journal::Entry entry;
            entry.action = actionWords().at(static_cast<int>(action));
            entry.path = item.file->urlFile();
            entry.size = seen.size;
            entry.modifiedNs = seen.modifiedNs;
            entry.mode = c.item.mode;
            entry.digest = c.digest;
            entry.kept = outcome.keptCopy;
            seq = journal->begin(entry);
            if (seq < 0)
                return leftAlone(outcome, QStringLiteral("the journal could not be written"));
        }
        outcome = carryOut(action, std::move(outcome), c.place, c.kept, seen);
        if (journal) {
            if (outcome.done)
                journal->done(seq, outcome.leftBehind, outcome.trashInfo);
            else
                journal->failed(seq, outcome.error);
        }
        return outcome;
    }
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
