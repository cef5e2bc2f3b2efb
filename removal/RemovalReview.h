#pragma once

#include "detect/GroupDictionary.h"
#include "removal/RemovalActions.h"
#include "review/Prompter.h"

#include <QList>
#include <optional>
#include <unordered_map>

struct ScanState;
class Selection;
class ResultLists;
class RemovalPlan;

// The removal review behind the review sheet: its rows are the chosen files
// (`duplicateSelectedArray`), single rows can be dropped, and after one confirmation one action
// runs over every listed file; then the groups and totals are brought up to date and the sheet
// closes onto the result screen, or onto the setup screen when no group is left.
class RemovalReview {
public:
    // What the sheet does when it closes: end with `returnCode`, then either the setup screen
    // (typewindow 0, toolbar 0: empty the setup screen's folder list, then show the alert
    // `allRemovedMessage` / `allRemovedInformative`) or the result screen (typewindow 2, toolbar 5
    // or 6, with the displayed list already rebuilt).
    struct CloseDecision {
        int returnCode = -1000;
        bool allRemoved = false;
        int typewindow = 2;
        int typetoolbar = 5;
        // False when nothing was removed: the result screen keeps its list, row and scroll position.
        bool listChanged = true;
    };

    RemovalReview(ScanState& state, Selection& selection, ResultLists& lists,
        const QList<FileDictionary>& SelectedFileFolderArray);

    qsizetype numberOfRows() const;
    DuplicateFilePtr fileAtRow(qsizetype row) const;

    // Works out again which listed files the removal will leave alone, and why (see RemovalPlan),
    // so the sheet can show them before the question is asked. Call after the list changed.
    void updatePlan();
    // The same from a plan worked out elsewhere (on another thread, from the same choice), or from
    // the reasons taken out of it there, so that the plan itself need not cross threads.
    void takePlan(const RemovalPlan& plan);
    using LeftReasons = std::unordered_map<const duplicateFile*, QString>;
    static LeftReasons leftReasonsOf(const RemovalPlan& plan);
    void takeLeftReasons(LeftReasons reasons) { m_leftReasons = std::move(reasons); }
    // Why the file of a row will be left alone; empty when it will be acted on.
    QString leftReasonAtRow(qsizetype row) const;
    qsizetype leftCount() const { return static_cast<qsizetype>(m_leftReasons.size()); }

    // A row's remove button: the file leaves the selection (not its group), and the plan is worked
    // out again unless `replan` is false (the caller does it). When the list is then empty the sheet
    // closes.
    std::optional<CloseDecision> removefromlist(qsizetype row, bool replan = true);

    // "Remove Selected": asks the confirmation (pop-up of the five actions, "Yes" / "No"). On "Yes"
    // runs the chosen action and refreshAndReload and answers how the sheet closes; on "No" changes
    // nothing and answers none (the sheet stays open).
    std::optional<CloseDecision> removeSelectedFiles(Prompter& prompter);
    // The confirmation alone: the action chosen on "Yes", none on "No".
    std::optional<RemovalActions::Action> askConfirmation(Prompter& prompter);
    // The confirmation's pop-up action: rewrites both texts for the chosen item and the number of
    // listed files.
    void chageAlertText(Prompter::Alert& alert) const;

    // Runs one action over the listed files, in order (lists untouched).
    QList<RemovalActions::Outcome> runAction(RemovalActions::Action action);

    // Updates the groups for every file the last action removed (every listed file when none ran),
    // by record identity: a group of two ends; a larger group loses the file, moves to the end of
    // `duplicateMainArray` and gets a new original if it lost it. Then the duplicate count and the
    // wasted space are counted again over the groups left, the selection is emptied, and the sheet
    // closes. The same as takeUpdate(updateAfter(groups, removedBy(lastOutcomes, groups))).
    CloseDecision refreshAndReload();

    // The groups and totals a removal leaves, worked out without changing anything: a group that
    // loses files is a new record and the old one stays as it was, so that another thread may work
    // it out while the window still shows the groups.
    struct Update {
        QList<DuplicateGroupPtr> groups;
        quint64 members = 0;
        quint64 wasted = 0;
    };
    static Update updateAfter(const QList<DuplicateGroupPtr>& groups, const QList<DuplicateFilePtr>& removed);
    // The records the outcomes say are gone: every item done, and every copy of `groups` that lay
    // inside a folder that went.
    static QList<DuplicateFilePtr> removedBy(
        const QList<RemovalActions::Outcome>& outcomes, const QList<DuplicateGroupPtr>& groups);
    // Puts an update in place (the groups, the totals, an empty selection) and answers how the
    // sheet closes.
    CloseDecision takeUpdate(Update update);
    // How the sheet closes now (rebuilds the displayed list when groups are left and the list
    // changed, in the background for a large result; "Cancel" and dropping the last row change
    // nothing on the result screen).
    CloseDecision closewindow(bool listChanged = true);

    // The outcome of the last action run, one entry per listed file.
    QList<RemovalActions::Outcome> lastOutcomes;

private:
    ScanState& m_state;
    Selection& m_selection;
    ResultLists& m_lists;
    const QList<FileDictionary>& m_SelectedFileFolderArray;
    LeftReasons m_leftReasons;
};
