#pragma once

#include <QFrame>
#include <atomic>

class QLabel;
class StripedProgressBar;
struct ScanState;

// The status popover of the scan-list pages: the figures of the list scan (items scanned, wasted
// space, duplicates found) and its grouping progress. It opens against the status button and
// closes when the user clicks anywhere else.
class StatusWindow : public QFrame {
    Q_OBJECT

public:
    explicit StatusWindow(const ScanState& state, QWidget* parent = nullptr);

    // Fills the figures from the scan state; the bar shows the grouping fraction unless `flo` is
    // set (the scan is still walking), 0 when either figure is 0.
    void set();
    // Whether the progress runs (1) or measures grouping (0). Safe from the scan thread.
    void setFlo(int flo) { m_flo = flo; }
    int flo() const { return m_flo; }
    // The bar of a scan that has not started grouping.
    void setINFIProcessBarShow(bool show);
    void setINFIProcessBarHide(bool hide);
    bool isINFIProcessBarShown() const;
    // Opens under (or above, near the screen's bottom) `anchor`, filled.
    void showAgainst(QWidget* anchor);
    void closein();

    QLabel* scannedItems() const { return m_scanned; }
    QLabel* wastedSpace() const { return m_wasted; }
    QLabel* duplicatesFound() const { return m_found; }
    StripedProgressBar* progress() const { return m_progress; }

private:
    const ScanState& m_state;
    std::atomic<int> m_flo { 0 };
    QLabel* m_scanned;
    QLabel* m_wasted;
    QLabel* m_found;
    StripedProgressBar* m_progress;
    StripedProgressBar* m_infiProgress;
};
