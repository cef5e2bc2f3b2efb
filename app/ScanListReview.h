#pragma once

#include "detect/GroupDictionary.h"
#include "engine/ScanState.h"
#include "review/ResultLists.h"
#include "review/Selection.h"

#include <QHash>
#include <QObject>
#include <memory>

class DeletingPanel;
class Prompter;
class QWidget;

// The removal review of the scan list's chosen copies. The review sheet (DeletingPanel) works on
// duplicate groups and their member records; this gives it the scan list's result in that form,
// in a state of its own so the folder scan's result is never touched, and when the sheet has closed
// hands back what is left: the groups, the copies still chosen, and whether any group remains.
class ScanListReview : public QObject {
    Q_OBJECT

public:
    struct Outcome {
        QList<GroupDictionary> groups;
        QList<FileDictionary> chosen;
    };

    ScanListReview(Prompter& prompter, QWidget* window, QObject* parent = nullptr);
    ~ScanListReview() override;

    // Opens the sheet over the whole result `groups` with the copies `chosen` listed, in order.
    void open(const QList<GroupDictionary>& groups, const QList<FileDictionary>& chosen);
    // Ends the sheet as its "Cancel" does, when it is open.
    void close();
    DeletingPanel* panel() const { return m_panel.get(); }

signals:
    void finished(const ScanListReview::Outcome& outcome);

private:
    void sheetClosed();

    Prompter& m_prompter;
    QWidget* m_window;
    ScanState m_state;
    Selection m_selection;
    ResultLists m_lists { m_state, m_selection };
    QList<FileDictionary> m_SelectedFileFolderArray;
    // The scan list's files by path, to hand the groups back as they were shown.
    QHash<QByteArray, FileDictionary> m_files;
    std::unique_ptr<DeletingPanel> m_panel;
};
