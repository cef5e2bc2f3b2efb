#include "support/ScriptedPrompter.h"

#include <QtTest>

void ScriptedPrompter::expectAlert(int response, bool suppressed, int popUpIndex) {
    m_alerts.enqueue({ response, suppressed, popUpIndex });
}

void ScriptedPrompter::expectPanel(int response, const QList<QByteArray>& urls) {
    m_panels.enqueue({ response, urls });
}

Prompter::AlertAnswer ScriptedPrompter::runAlert(Alert& alert) {
    if (m_alerts.isEmpty()) {
        alertsShown.append(alert);
        QTest::qFail(qPrintable(QStringLiteral("unexpected alert: ") + alert.messageText), __FILE__, __LINE__);
        const int buttons = static_cast<int>(std::max<qsizetype>(1, alert.buttons.size()));
        return { FirstButton + buttons - 1, false, alert.popUpIndex };
    }
    const ScriptedAlert script = m_alerts.dequeue();
    if (script.popUpIndex >= 0 && script.popUpIndex != alert.popUpIndex) {
        alert.popUpIndex = script.popUpIndex;
        if (alert.popUpChanged)
            alert.popUpChanged(alert);
    }
    alertsShown.append(alert);
    return { script.response, script.suppressed, alert.popUpIndex };
}

Prompter::PanelAnswer ScriptedPrompter::runOpenPanel(const OpenPanel& panel) {
    panelsShown.append(panel);
    if (m_panels.isEmpty()) {
        QTest::qFail(qPrintable(QStringLiteral("unexpected panel: ") + panel.message), __FILE__, __LINE__);
        return { Cancel, {} };
    }
    PanelAnswer answer = m_panels.dequeue();
    // A panel lets through only what its delegate enables.
    if (panel.shouldEnable) {
        QList<QByteArray> allowed;
        for (const QByteArray& url : answer.urls) {
            if (panel.shouldEnable(url))
                allowed.append(url);
        }
        answer.urls = allowed;
        if (allowed.isEmpty())
            answer.response = Cancel;
    }
    return answer;
}
