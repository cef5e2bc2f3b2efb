#pragma once

#include "detect/duplicates.h"
#include "review/DisplayList.h"
#include "review/FileSet.h"

#include <QList>
#include <QSet>
#include <QString>
#include <optional>
#include <unordered_set>

class Prompter;
class SettingsStore;

// The files chosen for removal on the result screen, and every rule that changes them. A file is
// chosen when the very record from a group's `listAll` is in `duplicateSelectedArray`: records
// compare by identity, never by path. Nothing protects a group's original from being chosen, but a
// copy inside a protected folder is never chosen by any rule, box or click: a group with a protected
// copy keeps that copy whatever the keep rule says.
//
// Every operation is synchronous; afterwards the screen redraws the rows concerned and shows
// toolbar state `toolbarState()`.
class Selection {
public:
    enum class CheckState { Off, Mixed, On };

    // The automatic-choice titles; only "keep Newest" is compared by its text.
    static QString keepNewestTitle() { return QStringLiteral("keep Newest"); }
    static QString keepOldestTitle() { return QStringLiteral("keep Oldest"); }

    QList<DuplicateFilePtr> duplicateSelectedArray;

    // The folders whose copies are never chosen (absolute paths, as bytes).
    void setProtectedFolders(const QList<QByteArray>& folders);
    // The protected folder `path` is in (or is), or nothing.
    QByteArray protectingFolder(const QByteArray& path) const;
    bool isProtected(const DuplicateFilePtr& file) const { return !protectingFolder(file->urlFile()).isEmpty(); }

    bool contains(const DuplicateFilePtr& file) const;
    bool isEmpty() const { return duplicateSelectedArray.isEmpty(); }
    // 6 with a selection, 5 without: what every change tells the toolbar.
    int toolbarState() const { return isEmpty() ? 5 : 6; }
    // Distinct files of the group that are chosen (the `countSelected` of the group check box).
    qsizetype countSelected(const duplicates& group) const;
    // The chosen records as a set, for many look-ups in a row (valid until the selection changes);
    // FileSet::countOf counts a group's distinct files in it.
    FileSet chosenSet() const { return FileSet(duplicateSelectedArray); }

    // Empties the selection; then, when the sender is the pop-up (a title is given), chooses in every
    // displayed group all files but the last ("keep Newest") or all but the first (any other title).
    // Groups hidden by the filter or the search end with nothing chosen.
    void AutoSelectAction(const std::optional<QString>& chosenTitle, const DisplayList& duplicateDisplayArray);
    void AutoSelectAction(const std::optional<QString>& chosenTitle, const QList<DuplicateGroupPtr>& groups) {
        AutoSelectAction(chosenTitle, DisplayList(groups));
    }
    // What AutoSelectAction with a title chooses, worked out without changing the choice: another
    // thread may call it on a copy of the selection.
    QList<DuplicateFilePtr> autoSelection(const QString& chosenTitle, const DisplayList& duplicateDisplayArray) const;
    // Within one group: segment 0 keeps all, 1 keeps the newest, anything else keeps the oldest.
    void keepSegmentAction(const duplicates& group, int segment);
    // The group check box after the user clicked it, `boxState` being the state the click left it
    // in. Mixed becomes On and the group joins the rest as a set (order lost, no repeats); On
    // chooses the whole group; Off chooses none of it. Answers the state the box must show.
    CheckState checkBoxActionMain(const duplicates& group, CheckState boxState);
    // The file check box with tag `index` in the group: toggles that record.
    void checkBoxActionFromTableRow(const duplicates& group, qsizetype index);
    // The group check box for `countSelected` of `fileCount` files.
    static CheckState setStateOfCheckBox(qsizetype countSelected, qsizetype fileCount);
    CheckState setStateOfCheckBox(const duplicates& group) const;

private:
    void removeFilesOf(const duplicates& group);
    // What a keep rule chooses in a group: with a protected copy, every copy but the protected ones;
    // else every copy but the newest (`keepNewest`) or the oldest.
    QList<DuplicateFilePtr> keepRuleChoice(const duplicates& group, bool keepNewest) const;
    QList<DuplicateFilePtr> unprotected(const QList<DuplicateFilePtr>& files) const;

    QSet<QByteArray> m_protectedFolders;
};

// The select-all question. Answers yes at once when "showAgain" holds any value; otherwise asks
// (OK / Cancel with a suppression box) and stores "yes" under "showAgain" only after OK with the
// box ticked.
bool alertSelectAll(Prompter& prompter, SettingsStore& store);
