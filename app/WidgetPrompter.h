#pragma once

#include "review/Prompter.h"

#include <QPointer>

class QWidget;

// The window's answers to the program's questions: window-modal message boxes and the toolkit's
// own (non-native) file dialog, so that a panel's delegate can decide which folders may be chosen.
// The only code in the program that opens a dialog.
class WidgetPrompter : public Prompter {
public:
    explicit WidgetPrompter(QWidget* window = nullptr);
    void setWindow(QWidget* window) { m_window = window; }

    AlertAnswer runAlert(Alert& alert) override;
    PanelAnswer runOpenPanel(const OpenPanel& panel) override;

private:
    QWidget* askingWindow() const;

    QPointer<QWidget> m_window;
};
