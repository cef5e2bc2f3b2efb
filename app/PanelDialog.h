#pragma once

#include "review/Prompter.h"

#include <QFileDialog>

// A file dialog set up from a Prompter::OpenPanel. Items the panel's delegate refuses are shown
// greyed out and cannot be chosen; several folders can be chosen at once when the panel allows it.
class PanelDialog : public QFileDialog {
    Q_OBJECT

public:
    PanelDialog(const Prompter::OpenPanel& panel, QWidget* parent);

    // The chosen items as byte paths, once the dialog was accepted.
    const QList<QByteArray>& chosenPaths() const { return m_chosen; }

public slots:
    void accept() override;

private:
    // The items to choose; `fromSelection` tells whether they were picked in the list.
    QList<QByteArray> candidates(bool* fromSelection) const;

    Prompter::OpenPanel m_panel;
    QList<QByteArray> m_chosen;
};
