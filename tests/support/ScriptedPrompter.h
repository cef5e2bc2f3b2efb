#pragma once

#include "review/Prompter.h"

#include <QQueue>

// Answers the program's questions from a script. A question that was not expected fails the test
// and is answered with Cancel (the last button), so no test can hang on a dialog.
class ScriptedPrompter : public Prompter {
public:
    struct ScriptedAlert {
        int response = FirstButton;
        bool suppressed = false;
        int popUpIndex = -1; // -1: leave the pop-up where the program put it
    };

    void expectAlert(int response, bool suppressed = false, int popUpIndex = -1);
    void expectPanel(int response, const QList<QByteArray>& urls = {});

    AlertAnswer runAlert(Alert& alert) override;
    PanelAnswer runOpenPanel(const OpenPanel& panel) override;

    bool allAnswered() const { return m_alerts.isEmpty() && m_panels.isEmpty(); }

    // What was asked, in order, for the test to check.
    QList<Alert> alertsShown;
    QList<OpenPanel> panelsShown;

private:
    QQueue<ScriptedAlert> m_alerts;
    QQueue<PanelAnswer> m_panels;
};
