#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;

// The result screen. For now it holds the search field (`_searchALL`) and a summary line; the
// lists of groups and files, the filters and the preview join it with the result screen's work.
class resultView : public QWidget {
    Q_OBJECT

public:
    explicit resultView(QWidget* parent = nullptr);

    QLineEdit* searchALL() const { return m_searchALL; }
    void setSummary(const QString& text);

private:
    QLineEdit* m_searchALL;
    QLabel* m_summary;
};
