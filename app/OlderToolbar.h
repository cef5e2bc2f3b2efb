#pragma once

#include "app/OlderToolbarItems.h"

#include <QWidget>

class QLabel;
class QToolButton;
class StripedProgressBar;

// The toolbar of the scan-list pages, in place of the main toolbar while they show: a way back to
// the folder scan on the left, then the items `_Add`, `_scan`, `_iPhoto`, `_showDuplicate`, a text
// with the list scan's progress in the middle, and `_Remove` and the new-scan button on the right.
// The buttons are drawn from OlderToolbarItems; what they do is the controller's.
class OlderToolbar : public QWidget {
    Q_OBJECT

public:
    explicit OlderToolbar(QWidget* parent = nullptr);

    QToolButton* folderScanButton() const { return m_folderScan; }
    QToolButton* Add() const { return m_Add; }
    QToolButton* scan() const { return m_scan; }
    QToolButton* iPhoto() const { return m_iPhoto; }
    QToolButton* showDuplicate() const { return m_showDuplicate; }
    QToolButton* Remove() const { return m_Remove; }
    QToolButton* ResetNewScanBTN() const { return m_ResetNewScanBTN; }
    // The buttons in their order from left to right, as Tab goes through them.
    QList<QWidget*> tabOrder() const {
        return { m_folderScan, m_Add, m_scan, m_iPhoto, m_showDuplicate, m_Remove, m_ResetNewScanBTN };
    }
    QLabel* statusText() const { return m_statusText; }
    StripedProgressBar* progress() const { return m_progress; }

    // Sets every button from the items; while a scan runs nothing that starts another scan or
    // forgets the list can be pressed.
    void apply(const OlderToolbarItems& items, bool scanRunning);
    // The list scan's progress: hidden when not scanning; running stripes until grouping starts,
    // then the fraction grouped.
    void setProgress(bool scanning, bool grouping, double fraction);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QToolButton* m_folderScan;
    QToolButton* m_Add;
    QToolButton* m_scan;
    QToolButton* m_iPhoto;
    QToolButton* m_showDuplicate;
    QToolButton* m_Remove;
    QToolButton* m_ResetNewScanBTN;
    QLabel* m_statusText;
    StripedProgressBar* m_progress;
};
