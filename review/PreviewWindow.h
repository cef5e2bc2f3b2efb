#pragma once

#include <QByteArray>
#include <QWidget>

class PreviewView;
class QLabel;

// A separate window with a large preview of one file, toggled by the Quick Look command: a call
// while it is hidden shows it with the given file, the next call closes it. While it is open it can
// follow the current file through setPath. Space and Escape close it as well.
class PreviewWindow : public QWidget {
    Q_OBJECT

public:
    // With a parent it stays a window of its own, kept above the parent.
    explicit PreviewWindow(QWidget* parent = nullptr);

    // Shows the file when the window is hidden, closes the window when it is shown. Returns whether
    // the window is open afterwards.
    bool toggle(const QByteArray& path);
    // Shows another file in the window (open or not).
    void setPath(const QByteArray& path);
    QByteArray path() const;
    PreviewView* view() const { return m_view; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    PreviewView* m_view;
    QLabel* m_name;
    QLabel* m_summary;
};
