#pragma once

#include <QWidget>

class QLabel;

// The scanning screen: the live figures of a scan, refreshed by the controller's timer: items
// scanned (`scannCount`), duplicates found (`duplicateCount`) and the space they take
// (`duplicateSize`).
class progressView : public QWidget {
    Q_OBJECT

public:
    explicit progressView(QWidget* parent = nullptr);

    QLabel* scannCount() const { return m_scannCount; }
    QLabel* duplicateSize() const { return m_duplicateSize; }
    QLabel* duplicateCount() const { return m_duplicateCount; }

    // The figures of a screen that has not scanned yet.
    void resetFigures();

private:
    QLabel* m_scannCount;
    QLabel* m_duplicateSize;
    QLabel* m_duplicateCount;
};
